// Names of the module's status codes.
#include "tools/host/status_text.h"

#include <fmt/format.h>

#include "module/kova_iot.h"

namespace kova_host {

std::string_view status_name(uint32_t status) {
  switch (status) {
    case IOT_STATUS_SUCCESS:
      return "IOT_STATUS_SUCCESS";
    case IOT_STATUS_NOT_READY:
      return "IOT_STATUS_NOT_READY";
    case IOT_STATUS_NOT_FOUND:
      return "IOT_STATUS_NOT_FOUND";
    case IOT_STATUS_UNSUPPORTED:
      return "IOT_STATUS_UNSUPPORTED";
    case IOT_STATUS_READ_FAILED:
      return "IOT_STATUS_READ_FAILED";
    case IOT_STATUS_WRITE_FAILED:
      return "IOT_STATUS_WRITE_FAILED";
    case IOT_STATUS_INVALID_PARAMETER:
      return "IOT_STATUS_INVALID_PARAMETER";
    case IOT_STATUS_JSON_ERROR:
      return "IOT_STATUS_JSON_ERROR";
    case IOT_STATUS_UNDEFINED_ITEM:
      return "IOT_STATUS_UNDEFINED_ITEM";
    default:
      return "";
  }
}

std::string describe_status(uint32_t status) {
  const std::string_view name = status_name(status);
  if (name.empty()) {
    return fmt::format("device library code {:#x}", status);
  }
  return fmt::format("{} (0x{:08X})", name, status);
}

}  // namespace kova_host
