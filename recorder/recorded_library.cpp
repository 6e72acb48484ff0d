// Opening the library behind the one that has taken its name.
#include "recorder/recorded_library.h"

#include <dlfcn.h>

#include <vector>

namespace kova_recorder {
namespace {

// The linker takes this very library for "/usr/lib/libKOVADevice.so", its SONAME, but only when
// it is spelled exactly so.
const std::vector<std::string> OWN_PLACES = {"/usr/lib/./libKOVADevice.so",
                                             "/usr/lib64/./libKOVADevice.so"};

std::string loader_reason() {
  const char* reason = dlerror();
  return reason == nullptr ? "unknown reason" : reason;
}

}  // namespace

RecordedLibrary open_device_library(const std::string& file) {
  const std::vector<std::string> places = file.empty() ? OWN_PLACES : std::vector{file};
  RecordedLibrary library;
  void* handle = nullptr;
  for (const std::string& place : places) {
    // As hosts open it, so that what else it exports is seen as it would be.
    handle = dlopen(place.c_str(), RTLD_LAZY | RTLD_GLOBAL);
    if (handle != nullptr) {
      break;
    }
    library.error += (library.error.empty() ? "" : "; ") + loader_reason();
  }
  if (handle == nullptr) {
    return library;
  }
  library.error.clear();
  library.get = reinterpret_cast<decltype(library.get)>(dlsym(handle, "KovaDeviceGetValue"));
  library.set = reinterpret_cast<decltype(library.set)>(dlsym(handle, "KovaDeviceSetValue"));
  if (library.get == nullptr || library.set == nullptr) {
    library.error = loader_reason();
  }
  return library;
}

}  // namespace kova_recorder
