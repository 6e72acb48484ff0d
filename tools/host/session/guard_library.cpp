// Loads the guard.
#include "tools/host/session/guard_library.h"

#include <dlfcn.h>

#include "tools/host/session/locations.h"

namespace kova_host {

void Guard::open(const std::string& library, Whereabouts& page) {
  void* handle = dlopen(guard_library().c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle == nullptr) {
    dlerror();
    return;
  }
  const auto open_library = reinterpret_cast<GuardOpen*>(dlsym(handle, kGuardOpen));
  leave_out_ = reinterpret_cast<GuardLeaveOut*>(dlsym(handle, kGuardLeaveOut));
  if (open_library == nullptr || leave_out_ == nullptr ||
      open_library(library.c_str(), &page) == 0) {
    leave_out_ = nullptr;
    dlclose(handle);
  }
}

void Guard::leave_out(std::span<const uint32_t> codes) const {
  if (leave_out_ != nullptr) {
    leave_out_(codes.data(), codes.size());
  }
}

}  // namespace kova_host
