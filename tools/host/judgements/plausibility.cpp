// Readings that cannot be true.
#include "tools/host/judgements/plausibility.h"

#include <fmt/format.h>

#include "tools/host/values/shown_value.h"

namespace kova_host {

std::optional<std::string> nonsense(const Item& item, const Reading& reading) {
  // 0 K is -273.15, and -272 where the module makes whole degrees of it.
  constexpr double kAbsoluteZeroCelsius = -272;
  const auto value = reading.number();
  const bool celsius = item.unit == "Cel" || item.unit == "Celsuis";
  if (celsius && value && *value <= kAbsoluteZeroCelsius) {
    return fmt::format("reads absolute zero ({}): the sensor reports 0",
                       value_with_unit(item, reading));
  }
  if (item.min && item.max && *item.min > *item.max) {
    return fmt::format("has a range that is turned over ({})", range_text(item));
  }
  if (reading.state == Reading::State::failed && reading.status == 0 &&
      item.kind == ValueKind::text && !item.missing) {
    return "answers a text that is not UTF-8";
  }
  if (out_of_range(item, reading)) {
    return fmt::format("reads {}, outside its range {}", value_with_unit(item, reading),
                       range_text(item));
  }
  return std::nullopt;
}

}  // namespace kova_host
