// The platform's dynamic loader behind the four loader functions.
#include "framework/device_library.h"

#include <dlfcn.h>

#include <cstring>

void* LibLoad(const std::string& name) {
  const std::string first = "/usr/lib/" + name + ".so";
  const std::string second = "/usr/lib64/" + name + ".so";
  void* handle = dlopen(first.c_str(), RTLD_LAZY | RTLD_GLOBAL);
  if (handle == nullptr) {
    dlerror();  // the first failure's text must not surface at the host's next dlerror()
    handle = dlopen(second.c_str(), RTLD_LAZY | RTLD_GLOBAL);
  }
  return handle;
}

void* LibGetSymbol(void* handle, const std::string& name) {
  return dlsym(handle, name.c_str());
}

int LibFree(void* handle) {
  return dlclose(handle);
}

char* StringCopy(char* dst, const char* src) {
  std::memcpy(dst, src, std::strlen(src) + 1);
  return dst;
}
