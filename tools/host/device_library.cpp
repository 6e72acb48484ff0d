// Finds the device library in the process.
#include "tools/host/device_library.h"

#include <dlfcn.h>

#include "tools/host/pending_call.h"

namespace kova_host {

std::optional<DeviceLibrary> DeviceLibrary::in_process() {
  for (const char* file : kDeviceLibraryFiles) {
    // Without RTLD_NOLOAD this might bring in another library than the module's.
    if (void* library = dlopen(file, RTLD_LAZY | RTLD_NOLOAD)) {
      void* entry = dlsym(library, kReadEntry);
      return entry == nullptr ? std::nullopt
                              : std::optional(DeviceLibrary(reinterpret_cast<ReadEntry*>(entry)));
    }
  }
  return std::nullopt;
}

DeviceAnswer DeviceLibrary::read(uint32_t code) const {
  const auto pending = PendingCall::of_code(code);
  DeviceAnswer answer;
  answer.status = read_(code, &answer.word);
  return answer;
}

}  // namespace kova_host
