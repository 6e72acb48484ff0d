// Where kovactl looks for the module, the simulated device library and machine descriptions.
// All places are relative to the program itself, so that an installation can be moved as a whole.
#include "tools/host/session/locations.h"

#include <fmt/format.h>

#include <algorithm>
#include <initializer_list>
#include <optional>
#include <system_error>

#include "tools/host/system/errors.h"

namespace kova_host {
namespace {

namespace fs = std::filesystem;

// Nothing where the program cannot tell where it is, as without /proc: what lies beside it is then
// not looked for. The working folder would be anybody's.
std::optional<fs::path> program_folder() {
  std::error_code error;
  const fs::path program = fs::read_symlink("/proc/self/exe", error);
  return program.is_absolute() ? std::optional(program.parent_path()) : std::nullopt;
}

fs::path first_file(std::initializer_list<fs::path> places, const fs::path& otherwise) {
  const std::optional<fs::path> folder = program_folder();
  if (!folder) {
    return otherwise;
  }
  for (const fs::path& place : places) {
    fs::path file = (*folder / place).lexically_normal();
    std::error_code error;
    if (fs::is_regular_file(file, error)) {
      return file;
    }
  }
  return otherwise;
}

}  // namespace

fs::path module_library() {
  const fs::path name = "libKovaIoT.so";
  return first_file({KOVA_HOST_LIBRARY_FOLDER / name, "../../module" / name}, name);
}

fs::path simulator_library() {
  const fs::path name = "libKOVADeviceSim.so";
  return first_file(
      {fs::path(KOVA_HOST_LIBRARY_FOLDER) / "kova-iot" / name, "../../simulator" / name}, name);
}

fs::path recorder_library() {
  const fs::path name = "libKOVADeviceRecorder.so";
  return first_file(
      {fs::path(KOVA_HOST_LIBRARY_FOLDER) / "kova-iot" / name, "../../recorder" / name}, name);
}

fs::path guard_library() {
  const fs::path name = "libKOVADeviceGuard.so";
  return first_file({fs::path(KOVA_HOST_LIBRARY_FOLDER) / "kova-iot" / name, "../host" / name},
                    name);
}

namespace {

// A shipped description by its name without suffix; "" if there is none.
fs::path shipped_description(const std::string& name) {
  if (name.empty() || name.find('/') != std::string::npos) {
    return {};
  }
  const std::string file = name + ".json";
  // The build tree has a link to the source's machine descriptions above the program.
  return first_file(
      {fs::path(KOVA_HOST_DATA_FOLDER) / "machines" / file, fs::path("../machines") / file},
      fs::path());
}

}  // namespace

bool is_machine_description(const std::string& name) {
  std::error_code error;
  return fs::is_regular_file(name, error) || !shipped_description(name).empty();
}

fs::path machine_description(const std::string& name) {
  std::error_code error;
  if (fs::exists(name, error)) {
    return name;
  }
  fs::path shipped = shipped_description(name);
  if (shipped.empty()) {
    throw HostError(Fault::usage, fmt::format("no machine description '{}'", name));
  }
  return shipped;
}

std::vector<std::string> shipped_machines() {
  std::vector<std::string> names;
  const std::optional<fs::path> folder = program_folder();
  if (!folder) {
    return names;
  }
  for (const fs::path& place :
       {fs::path(KOVA_HOST_DATA_FOLDER) / "machines", fs::path("../machines")}) {
    std::error_code error;
    for (const auto& file : fs::directory_iterator(*folder / place, error)) {
      if (file.path().extension() == ".json") {
        names.push_back(file.path().stem());
      }
    }
    if (!names.empty()) {
      break;
    }
  }
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace kova_host
