// Stands between the module's loader and the dynamic linker (the link wraps dlopen and dlsym), so
// that the in-memory device answers for the absolute paths of the device library.
#pragma once

#include <string>
#include <vector>

namespace wrapped_loader {

struct State {
  std::vector<std::string> openable{};  ///< paths that open as the in-memory device
  bool has_read_entry = true;
  bool has_write_entry = true;
  bool records = true;  ///< false: no memory is taken to keep what the module tried

  std::vector<std::string> tried{};  ///< paths the module tried to open, in order
  std::vector<int> flags{};          ///< and the flags it gave
};

/// The state the wraps act on. Everything but the device library's paths goes to the real linker.
State& state();

/// A fresh state in which the device library opens under /usr/lib.
void install_device_library();

}  // namespace wrapped_loader
