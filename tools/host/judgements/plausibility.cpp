// Readings that cannot be true.
#include "tools/host/judgements/plausibility.h"

#include <fmt/format.h>

#include "tools/host/values/shown_value.h"
#include "tools/host/values/units.h"

namespace kova_host {

std::optional<std::string> nonsense(const Item& item, const Reading& reading) {
  const auto value = reading.number();
  if (value && is_at_floor(item.unit, *value)) {
    return fmt::format("reads {} ({}): the sensor reports 0",
                       find_unit(item.unit)->quantity->floor_name, value_with_unit(item, reading));
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
