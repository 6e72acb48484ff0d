// What the module's unit texts measure. Base units are SI's, with degrees Celsius for temperatures
// and revolutions per minute for fans, as Prometheus and SenML have them.
#include "tools/host/values/quantity.h"
#include "tools/host/system/typed_number.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <variant>

namespace kova_host {
namespace {

constexpr std::array<Quantity, 16> kQuantities = {{
    {"V", "voltage", "volts", "Voltage.", "V", 1, 1},
    {"mV", "voltage", "volts", "Voltage.", "V", 1, 1000},
    {"mA", "current", "amperes", "Current; negative while a battery discharges.", "A", 1, 1000},
    // One milliampere hour is 3.6 coulombs.
    {"mAh", "charge", "coulombs", "Electric charge; 3600 coulombs are 1 Ah.", "C", 3.6, 1},
    {"Cel", "temperature", "celsius", "Temperature in degrees Celsius.", "Cel", 1, 1},
    // So spelled by the memory modules and the battery.
    {"Celsuis", "temperature", "celsius", "Temperature in degrees Celsius.", "Cel", 1, 1},
    {"RPM", "fan_speed", "rpm", "Fan speed in revolutions per minute.", "1/min", 1, 1},
    {"sec(s)", "duration", "seconds", "Duration, of timers and of a battery's charge.", "s", 1, 1},
    {"min", "duration", "seconds", "Duration, of timers and of a battery's charge.", "s", 60, 1},
    {"time(s)", "retries", "", "Number of retries.", "count", 1, 1},
    // Standard gravity: 9.80665 m/s2.
    {"G", "acceleration", "meters_per_second_squared", "Acceleration; 9.80665 is standard gravity.",
     "m/s2", 9.80665, 1},
    // Of memory: JEDEC's giga is 2^30.
    {"GB", "memory_size", "bytes", "Size of a memory module.", "B", 1073741824, 1},
    {"MT/s", "memory_speed", "transfers_per_second", "Data rate of a memory module.", "", 1e6, 1},
    {"Ranks", "memory_ranks", "", "Ranks of a memory module.", "", 1, 1},
    {"%", "level", "ratio", "Charge or health of a battery; 1 is full.", "/", 1, 100},
    {"cycles", "charge_cycles", "", "Charge cycles of a battery.", "count", 1, 1},
}};

double rounded(double value) {
  const std::string digits = fmt::format("{:.15g}", value);
  double result = value;
  std::from_chars(digits.data(), digits.data() + digits.size(), result);
  return result;
}

// "2 h 5 m" in minutes.
std::optional<double> minutes_of(std::string_view text) {
  unsigned hours = 0;
  unsigned minutes = 0;
  const char* const end = text.data() + text.size();
  const auto [after_hours, error] = std::from_chars(text.data(), end, hours);
  constexpr std::string_view kBetween = " h ";
  std::string_view rest(after_hours, static_cast<size_t>(end - after_hours));
  if (error != std::errc() || !rest.starts_with(kBetween)) {
    return std::nullopt;
  }
  rest.remove_prefix(kBetween.size());
  const auto [stop, second] = std::from_chars(rest.data(), end, minutes);
  return second == std::errc() && std::string_view(stop, static_cast<size_t>(end - stop)) == " m"
             ? std::optional(60.0 * hours + minutes)
             : std::nullopt;
}

}  // namespace

const Quantity* find_quantity(std::string_view unit) {
  const auto* match = std::find_if(kQuantities.begin(), kQuantities.end(),
                                   [unit](const Quantity& q) { return q.published == unit; });
  return match == kQuantities.end() ? nullptr : match;
}

double in_base_unit(const Item& item, double published) {
  const Quantity* quantity = find_quantity(item.unit);
  return quantity == nullptr ? published
                             : rounded(published * quantity->multiplier / quantity->divisor);
}

std::optional<double> published_value(const Item& item, const Reading& reading) {
  const auto* text = std::get_if<std::string>(&reading.value);
  if (text == nullptr || item.unit.empty()) {
    return reading.number();
  }
  const auto number = number_in(reading);
  return number ? number : minutes_of(*text);
}

std::optional<double> number_in(const Reading& reading) {
  if (const auto* text = std::get_if<std::string>(&reading.value)) {
    const auto number = parse_number(*text);
    return number ? std::optional(as_double(*number)) : std::nullopt;
  }
  return reading.number();
}

}  // namespace kova_host
