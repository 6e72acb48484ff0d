// The module carries the mark "KOVA-IOT-RELEASE 0.2.0" among its texts.
#include "tools/host/session/module_release.h"

#include <string_view>

#include "tools/host/system/errors.h"
#include "tools/host/system/regular_file.h"

namespace kova_host {
namespace {

std::string content_of(const std::string& file) {
  try {
    return read_regular_file(file);
  } catch (const HostError&) {
    return "";
  }
}

}  // namespace

std::string release_text(const std::string& module_file) {
  constexpr std::string_view kMark = "KOVA-IOT-RELEASE ";
  constexpr std::string_view kOfReleases = "0123456789.";
  constexpr size_t kLongest = 16;
  const std::string content = content_of(module_file);
  const size_t mark = content.find(kMark);
  if (mark == std::string::npos) {
    return "";
  }
  const std::string_view rest = std::string_view(content).substr(mark + kMark.size(), kLongest);
  const size_t length = rest.find_first_not_of(kOfReleases);
  // The text ends with a NUL, as every constant does.
  return length == 0 || length == std::string_view::npos || rest[length] != '\0'
             ? ""
             : ", release " + std::string(rest.substr(0, length));
}

}  // namespace kova_host
