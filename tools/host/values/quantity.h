// What the module's unit texts measure, in the base units that metrics and SenML have.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "tools/host/values/reading.h"

namespace kova_host {

struct Quantity {
  std::string_view published;  // the unit as the module spells it
  std::string_view name;       // what is measured, as a metric's name has it: "voltage"
  std::string_view unit;       // base unit in a metric's name: "volts"; "" for a plain number
  std::string_view help;
  std::string_view senml;  // symbol in the SenML units registry; "" where it has none
  double multiplier;       // value in the base unit = published value * multiplier / divisor
  double divisor;
};

// Null for a unit that this program does not know.
const Quantity* find_quantity(std::string_view unit);

// A number of the item's, such as an end of its range, in the base unit; as it is where the unit
// is unknown. What scaling adds beyond fifteen digits is rounded away.
double in_base_unit(const Item& item, double published);

// The reading as a number in the item's own unit. Texts that say one count too: the battery's
// "2 h 5 m" is 125 min. Nothing for other texts and for readings without a value.
std::optional<double> published_value(const Item& item, const Reading& reading);

// A number, or a text that is one: "0x7" is 7.
std::optional<double> number_in(const Reading& reading);

}  // namespace kova_host
