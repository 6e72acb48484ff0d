// libKOVADeviceGuard.so: under the device library's name in a worker, in front of the real one.
#include "tools/host/session/device_guard.h"

#include <dlfcn.h>
#include <link.h>

#include <algorithm>
#include <new>
#include <string>
#include <vector>

#define KOVA_GUARD_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

using kova_host::Whereabouts;

// The linker takes this very library for the real one only when its name is spelled as ever.
constexpr const char* kPlaces[] = {"/usr/lib/./libKOVADevice.so", "/usr/lib64/./libKOVADevice.so"};

struct Guarded {
  uint32_t (*get)(uint32_t, uint32_t*) = nullptr;
  uint32_t (*set)(uint32_t, uint32_t) = nullptr;
  Whereabouts* page = nullptr;
  void* handle = nullptr;
  std::vector<uint32_t> left_out;  // sorted
  std::string file;
};

Guarded& guarded() {
  static Guarded instance;
  return instance;
}

void* open_library(const char* library) {
  if (*library != '\0') {
    return dlopen(library, RTLD_LAZY | RTLD_GLOBAL);
  }
  for (const char* place : kPlaces) {
    if (void* handle = dlopen(place, RTLD_LAZY | RTLD_GLOBAL)) {
      return handle;
    }
  }
  return nullptr;
}

// The call that lasts as long as this lives.
class Call {
 public:
  explicit Call(uint32_t code) : page_(*guarded().page) {
    page_.code.store(code, std::memory_order_relaxed);
    page_.inside.store(1, std::memory_order_relaxed);
    page_.steps.fetch_add(1, std::memory_order_release);
  }
  ~Call() { page_.inside.store(0, std::memory_order_release); }
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;

 private:
  Whereabouts& page_;
};

bool is_left_out(uint32_t code) {
  const std::vector<uint32_t>& codes = guarded().left_out;
  return !codes.empty() && std::binary_search(codes.begin(), codes.end(), code);
}

}  // namespace

KOVA_GUARD_EXPORT uint32_t KovaDeviceGetValue(uint32_t code, uint32_t* value) {
  if (is_left_out(code)) {
    return kova_host::kLeftOutStatus;
  }
  const Call call(code);
  return guarded().get(code, value);
}

KOVA_GUARD_EXPORT uint32_t KovaDeviceSetValue(uint32_t code, uint32_t value) {
  if (is_left_out(code)) {
    return kova_host::kLeftOutStatus;
  }
  const Call call(code);
  return guarded().set(code, value);
}

KOVA_GUARD_EXPORT uint32_t KovaGuardOpen(const char* library, Whereabouts* page) {
  Guarded& to = guarded();
  void* handle = open_library(library);
  if (handle == nullptr) {
    dlerror();  // whoever looks for the library again tells why
    return 0;
  }
  to.get = reinterpret_cast<decltype(to.get)>(dlsym(handle, "KovaDeviceGetValue"));
  to.set = reinterpret_cast<decltype(to.set)>(dlsym(handle, "KovaDeviceSetValue"));
  to.page = page;
  to.handle = handle;
  const link_map* map = nullptr;
  if (dlinfo(handle, RTLD_DI_LINKMAP, &map) == 0) {
    to.file = map->l_name;
  }
  return to.get != nullptr && to.set != nullptr ? 1 : 0;
}

KOVA_GUARD_EXPORT void KovaGuardLeaveOut(const uint32_t* codes, size_t count) {
  std::vector<uint32_t>& left_out = guarded().left_out;
  left_out.assign(codes, codes + count);
  std::sort(left_out.begin(), left_out.end());
}

KOVA_GUARD_EXPORT void* KovaGuardHandle() {
  return guarded().handle;
}

KOVA_GUARD_EXPORT const char* KovaGuardLibrary() {
  return guarded().file.c_str();
}
