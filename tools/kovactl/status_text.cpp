// Names of the module's status codes.
#include "status_text.h"

#include <fmt/format.h>

#include "include/kova_iot.h"

namespace kovactl {

std::string_view status_name(uint32_t status) {
  switch (status) {
#define KOVACTL_NAME(code, meaning) \
  case code:                        \
    return #code;
    KOVA_IOT_STATUSES(KOVACTL_NAME)
#undef KOVACTL_NAME
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

}  // namespace kovactl
