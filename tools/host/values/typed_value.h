// What a write sends for the text that was typed.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/host/model/item.h"
#include "tools/host/system/json_ptr.h"
#include "tools/host/system/typed_number.h"

namespace kova_host {

// `text` is a number, a number with a unit ("10s", "10500 mV"), or one of the item's option labels;
// for a switch also on/off, yes/no, true/false, enable/disable. An item whose values are integers
// gets an integer of 32 bits; a scaled one the number that arrives as the nearest one that the
// device can hold; any other the number as it was typed.
// Throws HostError (usage) when the item cannot take the text.
Number value_to_set(const Item& item, std::string_view text);

// The number whose quotient by `scale`, which the module cuts to a whole one, is the whole number
// nearest to `value` / `scale`.
double nearest_held(double value, double scale);

// Throws HostError (usage) for an item that cannot be written, or whose write would change another
// one: that one of `items` is named.
void require_writable(const std::vector<Item>& items, const Item& item);

// A new jansson integer or real.
JsonPtr to_json(const Number& number);

}  // namespace kova_host
