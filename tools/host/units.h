// What the module's unit texts mean in the two export formats.
#pragma once

#include <string>
#include <string_view>

namespace kova_host {

struct Quantity {
  std::string_view published;    // the unit as the module spells it
  std::string_view metric;       // metric name, which ends in the unit
  std::string_view metric_unit;  // that ending
  std::string_view help;
  std::string_view senml;  // symbol in the SenML units registry; "" where it has none
  double multiplier;       // SenML value = published value * multiplier / divisor
  double divisor;
};

// Null for a unit that this program does not know.
const Quantity* find_quantity(std::string_view unit);

// `unit` with everything but lower-case letters and digits made "_", for a metric's name.
std::string metric_word(std::string_view unit);

}  // namespace kova_host
