// dlopen and dlsym with their troubles told.
#include "tools/host/system/loaded_library.h"

#include <dlfcn.h>
#include <fmt/format.h>
#include <link.h>

#include <utility>

#include "tools/host/system/errors.h"

namespace kova_host {
namespace {

// dlerror has nothing to tell of a library that RTLD_NOLOAD does not find.
[[noreturn]] void refuse(const std::string& what) {
  const char* reason = dlerror();
  throw HostError(Fault::usage, fmt::format("cannot load {}: {}", what,
                                            reason == nullptr ? "it is not there" : reason));
}

}  // namespace

LoadedLibrary::LoadedLibrary(const std::string& file, int mode, std::string what)
    : what_(std::move(what)), handle_(dlopen(file.c_str(), mode)) {
  if (handle_ == nullptr) {
    refuse(what_);
  }
}

void* LoadedLibrary::symbol(const char* name) const {
  void* const found = dlsym(handle_, name);
  if (found == nullptr) {
    refuse(what_);
  }
  return found;
}

std::string file_of_library(void* handle) {
  link_map* map = nullptr;
  return dlinfo(handle, RTLD_DI_LINKMAP, &map) == 0 ? map->l_name : "";
}

}  // namespace kova_host
