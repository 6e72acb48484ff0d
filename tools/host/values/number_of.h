// Readings as numbers.
#pragma once

#include <optional>

#include "tools/host/values/reading.h"

namespace kova_host {

// The reading as a number in the item's own unit. Texts that say one count too: the battery's
// "2 h 5 m" is 125 min. Nothing for other texts and for readings without a value.
std::optional<double> published_value(const Item& item, const Reading& reading);

// A number, or a text that is one: "0x7" is 7.
std::optional<double> number_in(const Reading& reading);

}  // namespace kova_host
