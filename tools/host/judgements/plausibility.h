// Readings that cannot be true.
#pragma once

#include <optional>
#include <string>

#include "tools/host/values/reading.h"

namespace kova_host {

// What is wrong with a reading that came without a failure, in words: absolute zero, a published
// range that is turned over, a value outside it. A text that is not UTF-8 shows as a read without
// a value. Nothing for a reading that may be true.
std::optional<std::string> nonsense(const Item& item, const Reading& reading);

}  // namespace kova_host
