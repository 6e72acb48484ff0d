// The module's status codes in words.
#include "tools/host/model/status_text.h"

#include <fmt/format.h>

#include "include/kova_iot.h"

namespace kova_host {

std::string_view status_name(uint32_t status) {
  switch (status) {
#define NAME(code, meaning) \
  case code:                \
    return #code;
    KOVA_IOT_STATUSES(NAME)
#undef NAME
    default:
      return "";
  }
}

std::string status_code(uint32_t status) {
  return status_name(status).empty() ? fmt::format("0x{:X}", status)
                                     : fmt::format("0x{:08X}", status);
}

std::string read_failure(uint32_t status) {
  const auto words = [status] {
    switch (status) {
      case IOT_STATUS_SUCCESS:
        return "the module answered without a value";
      case IOT_STATUS_NOT_READY:
        return "its device is not there";
      case IOT_STATUS_NOT_FOUND:
        return "the device gave nothing for it";
      case IOT_STATUS_UNSUPPORTED:
      case IOT_STATUS_UNDEFINED_ITEM:
        return "the module has no such item";
      default:
        return "the device did not answer";
    }
  };
  return status == IOT_STATUS_SUCCESS ? words()
                                      : fmt::format("{} ({})", words(), status_code(status));
}

std::string write_failure(uint32_t status) {
  const auto words = [status] {
    switch (status) {
      case IOT_STATUS_NOT_READY:
        return "its device is not there, or takes no writes";
      case IOT_STATUS_UNSUPPORTED:
        return "it cannot be written";
      case IOT_STATUS_INVALID_PARAMETER:
        return "it does not take such a value";
      default:
        return "the device refused the value";
    }
  };
  return fmt::format("{} ({})", words(), status_code(status));
}

std::string describe_status(uint32_t status) {
  const std::string_view name = status_name(status);
  if (name.empty()) {
    return fmt::format("device library code {:#x}", status);
  }
  return fmt::format("{} (0x{:08X})", name, status);
}

}  // namespace kova_host
