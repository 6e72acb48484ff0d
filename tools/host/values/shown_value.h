// Readings as people see them.
#pragma once

#include <string>

#include "tools/host/values/reading.h"

namespace kova_host {

// Twelve significant digits: what scaling adds in the last place of a double is not shown.
std::string short_number(double value);

// The value alone, in full: at most fifteen significant digits; "N/A" for an item that has
// none at present, "redacted" where a recording has a blank, "unreadable" after a failure.
std::string plain_value(const Reading& reading);

// "48.2 V", "1 (Enable)", "PC mode", "N/A", "unreadable: the device did not answer (0x5)".
std::string value_with_unit(const Item& item, const Reading& reading);

// Why a failed read came to nothing: the module's status in words, or what became of the worker.
std::string failure_reason(const Reading& reading);

// Why a reading failed, with the code: "the device did not answer (0x5)".
std::string failure_text(const Item& item, const Reading& reading);

// "7 .. 65535"; "" for an item without a range.
std::string range_text(const Item& item);

}  // namespace kova_host
