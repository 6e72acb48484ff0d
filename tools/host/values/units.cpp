// The table of units: one row a unit that the module publishes. Base units are SI's, with degrees
// Celsius for temperatures and revolutions per minute for fans, as Prometheus and SenML have them.
#include "tools/host/values/units.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <string>

namespace kova_host {
namespace {

constexpr Quantity kVoltage = {"voltage", "volts", "Voltage.", "V"};
constexpr Quantity kCurrent = {"current", "amperes",
                               "Current; negative while a battery discharges.", "A"};
constexpr Quantity kCharge = {"charge", "coulombs", "Electric charge; 3600 coulombs are 1 Ah.",
                              "C"};
// 0 K is -273.15, and -272 where the module makes whole degrees of it.
constexpr Quantity kTemperature = {"temperature", "celsius", "Temperature in degrees Celsius.",
                                   "Cel",         -272,      "absolute zero"};
constexpr Quantity kFanSpeed = {"fan_speed", "rpm", "Fan speed in revolutions per minute.",
                                "1/min"};
constexpr Quantity kDuration = {"duration", "seconds",
                                "Duration, of timers and of a battery's charge.", "s"};
constexpr Quantity kRetries = {"retries", "", "Number of retries.", "count"};
constexpr Quantity kAcceleration = {"acceleration", "meters_per_second_squared",
                                    "Acceleration; 9.80665 is standard gravity.", "m/s2"};
constexpr Quantity kMemorySize = {"memory_size", "bytes", "Size of a memory module.", "B"};
constexpr Quantity kMemorySpeed = {"memory_speed", "transfers_per_second",
                                   "Data rate of a memory module.", ""};
constexpr Quantity kMemoryRanks = {"memory_ranks", "", "Ranks of a memory module.", ""};
constexpr Quantity kLevel = {"level", "ratio", "Charge or health of a battery; 1 is full.", "/"};
constexpr Quantity kChargeCycles = {"charge_cycles", "", "Charge cycles of a battery.", "count"};

constexpr TypedUnit kTypedSeconds[] = {
    {"s"},       {"sec"},        {"secs"},        {"second"},  {"seconds"},    {"ms", 1, 1000},
    {"min", 60}, {"minute", 60}, {"minutes", 60}, {"h", 3600}, {"hour", 3600}, {"hours", 3600},
};
constexpr TypedUnit kTypedTimes[] = {{"time"}, {"times"}, {"x"}};
constexpr TypedUnit kTypedVolts[] = {{"volt"}, {"volts"}, {"mV", 1, 1000}, {"millivolts", 1, 1000}};
constexpr TypedUnit kTypedG[] = {{"mG", 1, 1000}, {"milli-G", 1, 1000}};

constexpr double kSecondsPerMinute = 60;
constexpr double kCoulombsPerMilliampereHour = 3.6;
constexpr double kStandardGravity = 9.80665;  // m/s2
constexpr double kGiga = 1073741824;          // JEDEC's, of memory: 2^30

// A column that is left out has nothing to say: no check unit, no other words, a factor of 1.
constexpr Unit kUnits[] = {
    {.published = "V", .shown = "V", .typed = kTypedVolts, .quantity = &kVoltage},
    {.published = "mV", .shown = "mV", .quantity = &kVoltage, .divisor = 1000},
    {.published = "mA", .shown = "mA", .quantity = &kCurrent, .divisor = 1000},
    {.published = "mAh",
     .shown = "mAh",
     .quantity = &kCharge,
     .multiplier = kCoulombsPerMilliampereHour},
    {.published = "Cel", .shown = "°C", .quantity = &kTemperature},
    // So spelled by the memory modules and the battery.
    {.published = "Celsuis", .shown = "°C", .quantity = &kTemperature},
    {.published = "RPM", .shown = "RPM", .quantity = &kFanSpeed},
    {.published = "sec(s)",
     .shown = "s",
     .check = "s",
     .typed = kTypedSeconds,
     .quantity = &kDuration},
    {.published = "min", .shown = "min", .quantity = &kDuration, .multiplier = kSecondsPerMinute},
    {.published = "time(s)", .shown = "times", .typed = kTypedTimes, .quantity = &kRetries},
    {.published = "G",
     .shown = "G",
     .typed = kTypedG,
     .quantity = &kAcceleration,
     .multiplier = kStandardGravity},
    {.published = "GB", .shown = "GB", .quantity = &kMemorySize, .multiplier = kGiga},
    {.published = "MT/s", .shown = "MT/s", .quantity = &kMemorySpeed, .multiplier = 1e6},
    {.published = "Ranks", .shown = "Ranks", .quantity = &kMemoryRanks},
    {.published = "%", .shown = "%", .check = "%", .quantity = &kLevel, .divisor = 100},
    {.published = "cycles", .shown = "cycles", .quantity = &kChargeCycles},
};

double rounded(double value) {
  const std::string digits = fmt::format("{:.15g}", value);
  double result = value;
  std::from_chars(digits.data(), digits.data() + digits.size(), result);
  return result;
}

}  // namespace

std::span<const Unit> units() {
  return kUnits;
}

const Unit* find_unit(std::string_view published) {
  const auto* match = std::ranges::find(kUnits, published, &Unit::published);
  return match == std::end(kUnits) ? nullptr : match;
}

double in_base_unit(std::string_view published, double value) {
  const Unit* unit = find_unit(published);
  return unit == nullptr ? value : rounded(value * unit->multiplier / unit->divisor);
}

bool is_at_floor(std::string_view published, double value) {
  const Unit* unit = find_unit(published);
  return unit != nullptr && in_base_unit(published, value) <= unit->quantity->floor;
}

}  // namespace kova_host
