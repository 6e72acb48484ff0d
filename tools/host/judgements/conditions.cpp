// What the rules look for.
#include "tools/host/judgements/conditions.h"

#include <fmt/format.h>

#include <algorithm>

#include "tools/host/judgements/judge.h"
#include "tools/host/model/status_text.h"
#include "tools/host/values/shown_value.h"
#include "tools/host/values/units.h"

namespace kova_host {
namespace {

// In the base unit, as limits are.
std::optional<double> base_value(const Case& at) {
  const auto number = judged_number(at.item, at.reading);
  return number ? std::optional(in_base_unit(at.item.unit, *number)) : std::nullopt;
}

Evidence with_value(const Case& at, const std::string& held_against, double distance) {
  const std::string value = value_with_unit(at.item, at.reading);
  return {held_against.empty() ? value : fmt::format("{} ({})", value, held_against), distance};
}

// The low-battery threshold of the battery type in force; nothing while the cut-off is switched
// off, and while the type is not known.
std::optional<double> cut_off(const SweepView& sweep) {
  if (sweep.number("PIC/Settings/Low battery voltage setup").value_or(0) == 0) {
    return std::nullopt;
  }
  return sweep.number(
      fmt::format("PIC/Settings/{} low battery voltage", sweep.label(kBatteryType)));
}

// The highest voltage of a supply in good order: ISO 16750-2 has 16 V for systems of 12 V, and 32 V
// for those of 24 V.
std::optional<double> highest_supply(const SweepView& sweep) {
  const std::string_view type = sweep.label(kBatteryType);
  return type == "12V" ? std::optional(16.0) : type == "24V" ? std::optional(32.0) : std::nullopt;
}

bool is_cold_as_nothing(const Case& at) {
  const auto value = at.reading.number();
  return value && is_at_floor(at.item.unit, *value);
}

}  // namespace

std::optional<Evidence> unreadable(const Case& at) {
  if (at.reading.state != Reading::State::failed || at.item.missing) {
    return std::nullopt;
  }
  // The module leaves a value alone when the device's text is none.
  const bool no_text = at.reading.status == 0 && at.item.kind == ValueKind::text;
  return Evidence{no_text ? "the device answers a text that is not UTF-8"
                          : failure_text(at.item, at.reading)};
}

std::optional<Evidence> gone(const Case& at) {
  if (!at.item.missing) {
    return std::nullopt;
  }
  return Evidence{at.reading.status == 0 ? "this machine does not have it"
                                         : read_failure(at.reading.status)};
}

std::optional<Evidence> absolute_zero(const Case& at) {
  return is_cold_as_nothing(at) ? std::optional(with_value(at, "", 0)) : std::nullopt;
}

std::optional<Evidence> beyond_range(const Case& at) {
  const auto value = at.reading.number();
  if (!value || !out_of_range(at.item, at.reading) || is_cold_as_nothing(at) ||
      (fits_path(kPowerInput, at.item) && highest_supply(at.sweep))) {
    return std::nullopt;
  }
  const bool turned = at.item.min && at.item.max && *at.item.min > *at.item.max;
  const double distance =
      std::max(at.item.min ? *at.item.min - *value : 0, at.item.max ? *value - *at.item.max : 0);
  return with_value(
      at, fmt::format("{}{}", turned ? "range is turned over: " : "", range_text(at.item)),
      distance);
}

std::optional<Evidence> near_maximum(const Case& at) {
  const auto value = at.reading.number();
  if (!value || !at.item.max || *at.item.max <= 0 || out_of_range(at.item, at.reading)) {
    return std::nullopt;
  }
  const double highest = at.rule.limit.value_or(1) * *at.item.max;
  return *value > highest ? std::optional(with_value(at, "maximum " + short_number(*at.item.max),
                                                     *value - highest))
                          : std::nullopt;
}

std::optional<Evidence> stopped(const Case& at) {
  if (at.reading.number() != 0.0) {
    return std::nullopt;
  }
  const bool others_turn =
      std::any_of(at.sweep.items().begin(), at.sweep.items().end(), [&at](const Item& other) {
        const Reading* reading = at.sweep.reading(other.id);
        return reading != nullptr && reading->number().value_or(0) > 0 &&
               looks_at(at.rule.looks_at, other);
      });
  return others_turn ? std::optional(with_value(at, "", 0)) : std::nullopt;
}

std::optional<Evidence> below_limit(const Case& at) {
  const auto value = base_value(at);
  const double lowest = at.rule.limit.value_or(0);
  return value && *value < lowest ? std::optional(with_value(at, "", lowest - *value))
                                  : std::nullopt;
}

std::optional<Evidence> above_limit(const Case& at) {
  const auto value = base_value(at);
  const double highest = at.rule.limit.value_or(0);
  return value && *value > highest ? std::optional(with_value(at, "", *value - highest))
                                   : std::nullopt;
}

std::optional<Evidence> no_battery_type(const Case& at) {
  return at.sweep.label(kBatteryType) == "ERR" ? std::optional(with_value(at, "", 0))
                                               : std::nullopt;
}

std::optional<Evidence> below_cut_off(const Case& at) {
  const auto value = at.reading.number();
  const auto threshold = cut_off(at.sweep);
  if (!value || !threshold || *value >= *threshold) {
    return std::nullopt;
  }
  return with_value(at, "cut-off " + short_number(*threshold), *threshold - *value);
}

std::optional<Evidence> near_cut_off(const Case& at) {
  const auto value = at.reading.number();
  const auto threshold = cut_off(at.sweep);
  const double margin = at.rule.limit.value_or(0);
  if (!value || !threshold || *value < *threshold || *value >= *threshold + margin) {
    return std::nullopt;
  }
  return with_value(at, "cut-off " + short_number(*threshold), *threshold + margin - *value);
}

std::optional<Evidence> above_supply(const Case& at) {
  const auto value = at.reading.number();
  const auto highest = highest_supply(at.sweep);
  if (!value || !highest || *value <= *highest) {
    return std::nullopt;
  }
  return with_value(at,
                    fmt::format("at most {} with a battery of {}", short_number(*highest),
                                at.sweep.label(kBatteryType)),
                    *value - *highest);
}

}  // namespace kova_host
