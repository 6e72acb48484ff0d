// Units as people write them behind a number.
#include "tools/host/values/typed_unit.h"
#include "tools/host/system/typed_number.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace kova_host {
namespace {

// One `typed` is `multiplier` / `divisor` of `published`.
struct TypedUnit {
  std::string_view published;
  std::string_view typed;
  int64_t multiplier = 1;
  int64_t divisor = 1;
};

constexpr std::array<TypedUnit, 21> kUnits = {{
    {"sec(s)", "s"},
    {"sec(s)", "sec"},
    {"sec(s)", "secs"},
    {"sec(s)", "second"},
    {"sec(s)", "seconds"},
    {"sec(s)", "ms", 1, 1000},
    {"sec(s)", "min", 60},
    {"sec(s)", "minute", 60},
    {"sec(s)", "minutes", 60},
    {"sec(s)", "h", 3600},
    {"sec(s)", "hour", 3600},
    {"sec(s)", "hours", 3600},
    {"time(s)", "time"},
    {"time(s)", "times"},
    {"time(s)", "x"},
    {"V", "volt"},
    {"V", "volts"},
    {"V", "mV", 1, 1000},
    {"V", "millivolts", 1, 1000},
    {"G", "mG", 1, 1000},
    {"G", "milli-G", 1, 1000},
}};

std::string_view without_blanks_around(std::string_view text) {
  const size_t first = text.find_first_not_of(' ');
  return first == std::string_view::npos
             ? std::string_view()
             : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

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
    if (const auto number = parse_number(without_blanks_around(text.substr(0, length)))) {
      return TypedQuantity{*number, without_blanks_around(text.substr(length))};
    }
  }
  return std::nullopt;
}

std::optional<Number> in_unit(const TypedQuantity& typed, std::string_view published) {
  if (typed.unit.empty() || same_word(typed.unit, published)) {
    return typed.number;
  }
  const auto* unit = std::find_if(kUnits.begin(), kUnits.end(), [&](const TypedUnit& candidate) {
    return candidate.published == published && same_word(candidate.typed, typed.unit);
  });
  return unit == kUnits.end() ? std::nullopt
                              : std::optional(times(typed.number, unit->multiplier, unit->divisor));
}

}  // namespace kova_host
