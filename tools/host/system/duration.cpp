// Lengths of time as people type them.
#include "tools/host/system/duration.h"

#include <fmt/format.h>

#include <array>
#include <charconv>
#include <cmath>

#include "tools/host/system/errors.h"

namespace kova_host {
namespace {

struct Unit {
  std::string_view name;
  double milliseconds;
};

// Those that begin with another one's letter before that one.
constexpr std::array<Unit, 7> kUnits = {{{"d", 86'400e3},
                                         {"h", 3'600e3},
                                         {"ms", 1},
                                         {"min", 60e3},
                                         {"m", 60e3},
                                         {"sec", 1e3},
                                         {"s", 1e3}}};

const Unit* unit_at(std::string_view text) {
  for (const Unit& unit : kUnits) {
    if (text.substr(0, unit.name.size()) == unit.name) {
      return &unit;
    }
  }
  return nullptr;
}

// "50ms", "1d": a round time as it is typed.
std::string typed_duration(std::chrono::milliseconds duration) {
  constexpr std::array<std::string_view, 4> kLongestFirst = {"d", "h", "m", "s"};
  for (const std::string_view name : kLongestFirst) {
    const auto length = static_cast<int64_t>(unit_at(name)->milliseconds);
    if (duration.count() >= length && duration.count() % length == 0) {
      return fmt::format("{}{}", duration.count() / length, name);
    }
  }
  return fmt::format("{}ms", duration.count());
}

}  // namespace

std::optional<std::chrono::milliseconds> parse_duration(std::string_view text) {
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
  if (total > static_cast<double>(kLongestDuration.count())) {
    return std::nullopt;
  }
  return std::chrono::milliseconds(std::llround(total));
}

std::chrono::milliseconds checked_duration(std::string_view text, std::string_view what,
                                           std::chrono::milliseconds shortest,
                                           std::chrono::milliseconds longest) {
  const auto duration = parse_duration(text);
  if (!duration || *duration < shortest || *duration > longest) {
    const std::string bounds =
        longest == kLongestDuration
            ? typed_duration(shortest) + " or more"
            : fmt::format("{} to {}", typed_duration(shortest), typed_duration(longest));
    const bool comma = text.find(',') != std::string_view::npos;
    throw HostError(Fault::usage,
                    fmt::format("'{}' is no {} of {}, such as 2s, 10m or 1h30m{}", text, what,
                                bounds, comma ? "; numbers have a point" : ""));
  }
  return *duration;
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
