// What the module's unit texts mean in the two export formats.
//
// Metrics carry the module's numbers as they are, so their names carry the module's units. Base
// units are in the plural, as Prometheus writes them. Scaled ones are in the singular: promtool
// takes "millivolts" for a slip, but these values are in millivolts.
//
// SenML has only base units in its first registry, and receivers need not know the second one;
// values are converted.
#include "tools/host/units.h"

#include <algorithm>
#include <array>

namespace kova_host {
namespace {

constexpr std::array<Quantity, 15> kQuantities = {{
    {"V", "kova_voltage_volts", "volts", "Voltage in volts.", "V", 1, 1},
    {"mV", "kova_voltage_millivolt", "millivolt", "Voltage in millivolts.", "V", 1, 1000},
    {"mA", "kova_current_milliampere", "milliampere", "Current in milliamperes.", "A", 1, 1000},
    // One milliampere hour is 3.6 coulombs.
    {"mAh", "kova_charge_milliampere_hour", "milliampere_hour",
     "Electric charge in milliampere hours.", "C", 3.6, 1},
    {"Cel", "kova_temperature_celsius", "celsius", "Temperature in degrees Celsius.", "Cel", 1, 1},
    // So spelled by the memory modules and the battery.
    {"Celsuis", "kova_temperature_celsius", "celsius", "Temperature in degrees Celsius.", "Cel", 1,
     1},
    {"RPM", "kova_fan_speed_rpm", "rpm", "Fan speed in revolutions per minute.", "1/min", 1, 1},
    {"sec(s)", "kova_duration_seconds", "seconds", "Duration of a timer in seconds.", "s", 1, 1},
    {"min", "kova_duration_minute", "minute", "Duration in minutes.", "s", 60, 1},
    {"time(s)", "kova_retry_times", "times", "Number of retries.", "count", 1, 1},
    // Standard gravity: 9.80665 m/s2.
    {"G", "kova_acceleration_g", "g", "Acceleration in units of standard gravity.", "m/s2", 9.80665,
     1},
    // Of memory: JEDEC's giga is 2^30.
    {"GB", "kova_memory_size_gigabyte", "gigabyte", "Size of a memory module in gigabytes.", "B",
     1073741824, 1},
    {"Ranks", "kova_memory_ranks", "ranks", "Ranks of a memory module.", "", 1, 1},
    {"%", "kova_level_percent", "percent", "Level in per cent of full.", "/", 1, 100},
    {"cycles", "kova_charge_cycles", "cycles", "Charge cycles of the battery.", "count", 1, 1},
}};

}  // namespace

const Quantity* find_quantity(std::string_view unit) {
  const auto* match = std::find_if(kQuantities.begin(), kQuantities.end(),
                                   [unit](const Quantity& q) { return q.published == unit; });
  return match == kQuantities.end() ? nullptr : match;
}

std::string metric_word(std::string_view unit) {
  std::string word;
  for (const char c : unit) {
    const bool upper = c >= 'A' && c <= 'Z';
    const bool keep = (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
    word += upper ? static_cast<char>(c - 'A' + 'a') : keep ? c : '_';
  }
  return word;
}

}  // namespace kova_host
