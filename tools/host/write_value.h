// What a `set` sends for the text that was typed.
#pragma once

#include <string>
#include <string_view>

#include "tools/host/item.h"
#include "tools/host/json_ptr.h"

namespace kova_host {

// `text` is a number or one of the item's option labels. An item whose values are integers gets an
// integer of 32 bits; any other gets the number as it was typed, integer or real.
// Throws HostError (usage) when the item cannot take the text.
Number value_to_set(const Item& item, std::string_view text);

// A new jansson integer or real.
JsonPtr to_json(const Number& number);

}  // namespace kova_host
