// Loads the module.
#include "tools/host/session/module.h"

#include <dlfcn.h>
#include <fmt/format.h>

#include "include/kova_iot.h"
#include "tools/host/session/locations.h"
#include "tools/host/system/errors.h"
#include "tools/host/system/loaded_library.h"

namespace kova_host {
namespace {

// A file in the working folder needs no "./" to be found, as with any other program's arguments.
std::filesystem::path chosen_module(const std::string& module) {
  if (module.empty()) {
    return module_library();
  }
  std::error_code error;
  return std::filesystem::exists(module, error) ? std::filesystem::absolute(module)
                                                : std::filesystem::path(module);
}

}  // namespace

Module::Module(const std::string& file) : file_(chosen_module(file)) {
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

}  // namespace kova_host
