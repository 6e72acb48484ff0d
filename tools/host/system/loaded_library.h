// A shared library brought into the process, and its entries by name.
#pragma once

#include <string>

namespace kova_host {

// Stays in the process to its end, as libraries that keep state must. What cannot be loaded or
// found is a HostError that tells `what` the library is and the dynamic linker's reason.
class LoadedLibrary {
 public:
  // `mode` as for dlopen.
  LoadedLibrary(const std::string& file, int mode, std::string what);

  template <typename Function>
  Function* entry(const char* name) const {
    return reinterpret_cast<Function*>(symbol(name));
  }

 private:
  void* symbol(const char* name) const;

  std::string what_;
  void* handle_;
};

// The file that a handle of dlopen stands for; "" if the dynamic linker does not tell.
std::string file_of_library(void* handle);

}  // namespace kova_host
