// Numbers with the unit that people write behind them.
#include "tools/host/values/typed_quantity.h"

#include <algorithm>
#include <cstdint>

#include "tools/host/values/units.h"

namespace kova_host {
namespace {

Number times(const Number& number, int64_t multiplier, int64_t divisor) {
  if (const auto* integer = std::get_if<int64_t>(&number);
      integer != nullptr && divisor == 1 && multiplier == 1) {
    return *integer;
  }
  const double value = as_double(number);
  return value * static_cast<double>(multiplier) / static_cast<double>(divisor);
}

}  // namespace

std::optional<TypedQuantity> parse_quantity(std::string_view text) {
  for (size_t length = text.size(); length > 0; --length) {
    if (const auto number = parse_number(trimmed(text.substr(0, length)))) {
      return TypedQuantity{*number, trimmed(text.substr(length))};
    }
  }
  return std::nullopt;
}

std::optional<Number> in_unit(const TypedQuantity& typed, std::string_view published) {
  if (typed.unit.empty() || same_word(typed.unit, published)) {
    return typed.number;
  }
  const Unit* unit = find_unit(published);
  if (unit == nullptr) {
    return std::nullopt;
  }
  const auto word = std::ranges::find_if(
      unit->typed, [&](const TypedUnit& known) { return same_word(known.word, typed.unit); });
  return word == unit->typed.end()
             ? std::nullopt
             : std::optional(times(typed.number, word->multiplier, word->divisor));
}

}  // namespace kova_host
