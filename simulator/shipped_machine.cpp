// Machine descriptions that come with the library. Their folder is found from the library's own,
// so that an installation can be moved as a whole.
#include "simulator/shipped_machine.h"

#include <dlfcn.h>

#include <filesystem>
#include <initializer_list>

namespace kova_sim {
namespace {

namespace fs = std::filesystem;

// The folder of the file that this code was loaded from.
fs::path own_folder() {
  static const char here = 0;
  Dl_info info{};
  if (dladdr(&here, &info) == 0 || info.dli_fname == nullptr) {
    return {};
  }
  std::error_code error;
  return fs::canonical(info.dli_fname, error).parent_path();
}

}  // namespace

std::string description_file(const std::string& name) {
  std::error_code error;
  if (name.empty() || name.find('/') != std::string::npos || fs::exists(name, error)) {
    return name;
  }
  // Installed, and in the build tree.
  for (const char* machines : {KOVA_SIM_MACHINES_FOLDER, "machines"}) {
    fs::path file = own_folder() / machines / (name + ".json");
    if (fs::is_regular_file(file, error)) {
      return file.lexically_normal();
    }
  }
  return name;
}

}  // namespace kova_sim
