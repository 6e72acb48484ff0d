// Loads the module, and before it the simulated device library when one is asked for.
#include "tools/host/session/session.h"

#include <dlfcn.h>
#include <fmt/format.h>

#include <cstdlib>

#include "include/kova_iot.h"
#include "tools/host/model/status_text.h"
#include "tools/host/session/diagnosis.h"
#include "tools/host/session/direct_device.h"
#include "tools/host/session/locations.h"
#include "tools/host/system/errors.h"
#include "tools/host/system/loaded_library.h"

namespace kova_host {
namespace {

namespace fs = std::filesystem;

// Puts the simulated device library into the process, where the module's own dlopen of the real
// one then finds it by its SONAME. It stays for the life of the process, as the real one does.
void load_simulator(const std::optional<std::string>& machine) {
  if (machine) {
    const fs::path description = machine_description(*machine);
    if (setenv("KOVA_SIM_MACHINE", description.c_str(), 1) != 0) {
      throw std::bad_alloc();
    }
  }
  const fs::path library = simulator_library();
  // A recorder before it hands the calls on.
  DirectDevice::require_none_but({library, recorder_library()}, "simulate",
                                 "--simulate needs no preloading");
  const LoadedLibrary simulator(library, RTLD_NOW | RTLD_GLOBAL, "the simulated device library");
  const char* error = simulator.entry<const char*()>("KovaSimulatorError")();
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
  const LoadedLibrary module(file_, RTLD_NOW | RTLD_LOCAL, "the module");
  initialize_ = module.entry<uint32_t()>("KovaIoTInitialize");
  uninitialize_ = module.entry<uint32_t()>("KovaIoTUninitialize");
  capability_ = module.entry<uint32_t(json_t*)>("KovaIoTGetMDCapability");
  get_ = module.entry<uint32_t(uint32_t, json_t*)>("KovaIoTGetMDValue");
  set_ = module.entry<uint32_t(uint32_t, json_t*)>("KovaIoTSetMDValue");
  // Not used here, but a library without them is no such module.
  module.entry<uint32_t(KovaIoTEventHandler)>("KovaIoTSetMDEventHandler");
  const uint32_t module_id = module.entry<uint32_t()>("KovaIoTGetModuleID")();
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
