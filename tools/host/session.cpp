// Loads the module, and before it the simulated device library when one is asked for.
#include "tools/host/session.h"

#include <dlfcn.h>
#include <fmt/format.h>

#include <cstdlib>

#include "module/kova_iot.h"
#include "tools/host/diagnosis.h"
#include "tools/host/errors.h"
#include "tools/host/locations.h"
#include "tools/host/status_text.h"

namespace kova_host {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void refuse_library(std::string_view what) {
  const char* reason = dlerror();
  throw HostError(Fault::usage,
                  fmt::format("cannot load {}: {}", what, reason ? reason : "unknown reason"));
}

template <typename Function>
Function* resolve(void* library, const char* name) {
  void* symbol = dlsym(library, name);
  if (symbol == nullptr) {
    refuse_library("the library");
  }
  return reinterpret_cast<Function*>(symbol);
}

// Puts the simulated device library into the process, where the module's own dlopen of the real
// one then finds it by its SONAME. It stays for the life of the process, as the real one does.
void load_simulator(const std::optional<std::string>& machine) {
  if (machine) {
    const fs::path description = machine_description(*machine);
    if (setenv("KOVA_SIM_MACHINE", description.c_str(), 1) != 0) {
      throw std::bad_alloc();
    }
  }
  const fs::path file = simulator_library();
  void* library = dlopen(file.c_str(), RTLD_NOW | RTLD_GLOBAL);
  if (library == nullptr) {
    refuse_library("the simulated device library");
  }
  const char* error = resolve<const char*()>(library, "KovaSimulatorError")();
  if (error != nullptr) {
    throw HostError(Fault::usage, error);
  }
}

// A file in the working folder needs no "./" to be found, as with any other program's arguments.
fs::path chosen_module(const std::string& module) {
  if (module.empty()) {
    return module_library();
  }
  std::error_code error;
  return fs::exists(module, error) ? fs::absolute(module) : fs::path(module);
}

}  // namespace

Module::Module(const HostOptions& options) {
  if (options.simulate) {
    load_simulator(options.machine);
  }
  file_ = chosen_module(options.module);
  void* library = dlopen(file_.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) {
    refuse_library("the module");
  }
  initialize_ = resolve<uint32_t()>(library, "KovaIoTInitialize");
  uninitialize_ = resolve<uint32_t()>(library, "KovaIoTUninitialize");
  capability_ = resolve<uint32_t(json_t*)>(library, "KovaIoTGetMDCapability");
  get_ = resolve<uint32_t(uint32_t, json_t*)>(library, "KovaIoTGetMDValue");
  set_ = resolve<uint32_t(uint32_t, json_t*)>(library, "KovaIoTSetMDValue");
  // Not used here, but a library without them is no such module.
  resolve<uint32_t(KovaIoTEventHandler)>(library, "KovaIoTSetMDEventHandler");
  const uint32_t module_id = resolve<uint32_t()>(library, "KovaIoTGetModuleID")();
  if (module_id != KOVA_IOT_MODULE_ID) {
    throw HostError(Fault::usage, fmt::format("'{}' is module {}, not {}", file_.native(),
                                              module_id, KOVA_IOT_MODULE_ID));
  }
}

Session::Session(const Module& module, bool simulated) : module_(module) {
  const uint32_t status = module_.initialize();
  if (status == IOT_STATUS_SUCCESS) {
    return;
  }
  const std::string hint = simulated ? "" : "; --simulate shows a simulated machine";
  const std::string reason =
      status == IOT_STATUS_NOT_FOUND
          ? "no device found: " + cause_of_no_device(diagnose_device())
          : fmt::format("the module did not start: {}", describe_status(status));
  throw HostError(Fault::no_device, reason + hint, status);
}

Session::~Session() {
  module_.uninitialize();
}

JsonPtr Session::capability() const {
  JsonPtr document = own(json_object());
  const uint32_t status = module_.capability(document.get());
  if (status != IOT_STATUS_SUCCESS) {
    throw HostError(Fault::no_device, "the module offers no items: " + describe_status(status),
                    status);
  }
  return document;
}

}  // namespace kova_host
