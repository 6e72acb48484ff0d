// Numbers with the unit that people write behind them.
#pragma once

#include <optional>
#include <string_view>

#include "tools/host/system/typed_number.h"

namespace kova_host {

struct TypedQuantity {
  Number number;
  std::string_view unit;  // "" for a number alone
};

// "10", "10s", "10.5 V"; nothing for a text that does not begin with a number.
std::optional<TypedQuantity> parse_quantity(std::string_view text);

// `typed` in the unit that the module publishes: 2 of "min" are 120 of "sec(s)". Nothing for a unit
// that is not one of the same quantity.
std::optional<Number> in_unit(const TypedQuantity& typed, std::string_view published);

}  // namespace kova_host
