// Lengths of time as people type them.
#include "tools/host/system/duration.h"

#include <fmt/format.h>

#include <array>
#include <charconv>
#include <cmath>

namespace kova_host {
namespace {

struct Unit {
  std::string_view name;
  double milliseconds;
};

// Each before those that may follow it; "ms" before "m", whose letter it begins with.
constexpr std::array<Unit, 5> kUnits = {
    {{"d", 86'400e3}, {"h", 3'600e3}, {"ms", 1}, {"m", 60e3}, {"s", 1e3}}};

const Unit* unit_at(std::string_view text) {
  for (const Unit& unit : kUnits) {
    if (text.substr(0, unit.name.size()) == unit.name) {
      return &unit;
    }
  }
  return nullptr;
}

}  // namespace

std::optional<std::chrono::milliseconds> parse_duration(std::string_view text) {
  constexpr double kYear = 365 * 86'400e3;
  double total = 0;
  double before = INFINITY;  // the unit before must be larger
  do {
    double number = 0;
    const auto [end, error] =
        std::from_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed);
    if (error != std::errc() || !(number >= 0) || !std::isfinite(number)) {
      return std::nullopt;
    }
    text.remove_prefix(static_cast<size_t>(end - text.data()));
    const Unit* unit = unit_at(text);
    if (unit == nullptr ? !text.empty() || before != INFINITY : unit->milliseconds >= before) {
      return std::nullopt;
    }
    before = unit == nullptr ? 1e3 : unit->milliseconds;
    total += number * before;
    text.remove_prefix(unit == nullptr ? 0 : unit->name.size());
  } while (!text.empty());
  if (total > kYear) {
    return std::nullopt;
  }
  return std::chrono::milliseconds(std::llround(total));
}

std::string duration_text(std::chrono::milliseconds duration) {
  const auto seconds = (duration.count() + 500) / 1000;
  std::string text;
  const auto add = [&text](auto number, std::string_view unit) {
    if (number > 0) {
      text += fmt::format("{}{} {}", text.empty() ? "" : " ", number, unit);
    }
  };
  add(seconds / 3600, "h");
  add(seconds / 60 % 60, "min");
  add(seconds % 60, "s");
  return text.empty() ? "0 s" : text;
}

}  // namespace kova_host
