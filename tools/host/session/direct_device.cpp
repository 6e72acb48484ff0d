// Finds the device library in the process.
#include "tools/host/session/direct_device.h"

#include <dlfcn.h>
#include <fmt/format.h>

#include <algorithm>

#include "tools/host/session/device_guard.h"
#include "tools/host/system/errors.h"
#include "tools/host/system/loaded_library.h"

namespace kova_host {

namespace {

void* loaded_library() {
  for (const char* file : kDeviceLibraryFiles) {
    // Without RTLD_NOLOAD this might bring in another library than the module's.
    if (void* library = dlopen(file, RTLD_LAZY | RTLD_NOLOAD)) {
      return library;
    }
  }
  return nullptr;
}

}  // namespace

void DirectDevice::require_none_but(std::initializer_list<std::filesystem::path> libraries,
                                    std::string_view verb, std::string_view advice) {
  void* present = loaded_library();
  if (present == nullptr) {
    return;
  }
  const std::string file = file_of_device_library(present);
  const bool is_known = std::any_of(libraries.begin(), libraries.end(), [&](const auto& library) {
    std::error_code error;
    return std::filesystem::equivalent(file, library, error);
  });
  if (!is_known) {
    throw HostError(Fault::usage,
                    fmt::format("cannot {}: {} is preloaded and would answer first; unset "
                                "LD_PRELOAD ({})",
                                verb, file, advice));
  }
}

std::string file_of_device_library(void* handle) {
  if (void* guard = dlsym(handle, kGuardLibrary)) {
    return std::filesystem::path(reinterpret_cast<GuardLibrary*>(guard)()).lexically_normal();
  }
  dlerror();
  return file_of_library(handle);
}

std::optional<DirectDevice> DirectDevice::in_process() {
  void* library = loaded_library();
  void* entry = library == nullptr ? nullptr : dlsym(library, kReadEntry);
  if (entry == nullptr) {
    return std::nullopt;
  }
  if (void* guard = dlsym(library, kGuardHandle)) {
    library = reinterpret_cast<GuardHandle*>(guard)();
  }
  void* redacted = dlsym(library, "KovaSimulatorIsRedacted");
  dlerror();
  return DirectDevice(reinterpret_cast<ReadEntry*>(entry),
                      reinterpret_cast<RedactedEntry*>(redacted));
}

DeviceAnswer DirectDevice::read(uint32_t code) const {
  DeviceAnswer answer;
  answer.status = read_(code, &answer.word);
  return answer;
}

}  // namespace kova_host
