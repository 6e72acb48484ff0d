// The wraps of dlopen and dlsym.
#include "tests/support/wrapped_loader.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstring>

#include "tests/support/device_double.h"

namespace {

int device_handle = 0;

}  // namespace

namespace wrapped_loader {

State& state() {
  static State the_state;
  return the_state;
}

void install_device_library() {
  state() = {.openable = {"/usr/lib/libKOVADevice.so"}};
}

}  // namespace wrapped_loader

// The linker settles these names.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {

void* __real_dlopen(const char* path, int flags);
void* __real_dlsym(void* handle, const char* name);

void* __wrap_dlopen(const char* path, int flags) {
  if (path == nullptr || std::strstr(path, "libKOVADevice") == nullptr) {
    return __real_dlopen(path, flags);
  }
  auto& state = wrapped_loader::state();
  if (state.records) {
    state.tried.emplace_back(path);
    state.flags.push_back(flags);
  }
  const bool opens = std::ranges::find(state.openable, path) != state.openable.end();
  return opens ? &device_handle : __real_dlopen("/nonexistent/libKOVADevice.so", flags);
}

void* __wrap_dlsym(void* handle, const char* name) {
  if (handle != &device_handle) {
    return __real_dlsym(handle, name);
  }
  const auto& state = wrapped_loader::state();
  if (state.has_read_entry && std::strcmp(name, "KovaDeviceGetValue") == 0) {
    return reinterpret_cast<void*>(&DeviceDouble::get);
  }
  if (state.has_write_entry && std::strcmp(name, "KovaDeviceSetValue") == 0) {
    return reinterpret_cast<void*>(&DeviceDouble::set);
  }
  return nullptr;
}
}
// NOLINTEND(bugprone-reserved-identifier)
