// What the module's unit texts mean, for all that shows, takes, exports or judges values.
#pragma once

#include <cstdint>
#include <limits>
#include <span>
#include <string_view>

namespace kova_host {

// What is measured, in the base unit that metrics and SenML have.
struct Quantity {
  std::string_view name;  // as a metric's name has it: "voltage"
  std::string_view unit;  // base unit in a metric's name: "volts"; "" for a plain number
  std::string_view help;
  std::string_view senml;  // the base unit's symbol in the SenML units registry; "" without one
  // A value can only be true above this one, which is called so. In the base unit.
  double floor = -std::numeric_limits<double>::infinity();
  std::string_view floor_name{};
};

// One of a word that people type is `multiplier` / `divisor` of the unit.
struct TypedUnit {
  std::string_view word;
  int64_t multiplier = 1;
  int64_t divisor = 1;
};

struct Unit {
  std::string_view published;          // as the module spells it
  std::string_view shown;              // as the page shows it
  std::string_view check{};            // in performance data, whose guidelines know s, % and B
  std::span<const TypedUnit> typed{};  // what people may write for it besides
  const Quantity* quantity;            // never null in a row
  double multiplier = 1;               // value in the base unit = published * multiplier / divisor
  double divisor = 1;
};

// Every unit that this release knows.
std::span<const Unit> units();

// Null for a unit that this release does not know, "" among them.
const Unit* find_unit(std::string_view published);

// A number in the published unit, such as an end of a range, in the base unit; as it is where the
// unit is unknown. What scaling adds beyond fifteen digits is rounded away.
double in_base_unit(std::string_view published, double value);

// True of a value in the published unit that lies at its quantity's floor, or below.
bool is_at_floor(std::string_view published, double value);

}  // namespace kova_host
