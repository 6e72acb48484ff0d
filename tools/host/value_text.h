// Readings as people see them.
#pragma once

#include <string>

#include "tools/host/reading.h"

namespace kova_host {

// Twelve significant digits: what scaling adds in the last place of a double is not shown.
std::string short_number(double value);

// The value alone, in full: at most fifteen significant digits; "N/A" without one.
std::string plain_value(const Reading& reading);

// "48.2 V", "1 (Enable)", "PC mode", "N/A".
std::string value_with_unit(const Item& item, const Reading& reading);

// "7 .. 65535"; "" for an item without a range.
std::string range_text(const Item& item);

// Why a reading failed.
std::string failure_text(const Reading& reading);

}  // namespace kova_host
