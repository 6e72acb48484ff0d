// JSON text as hosts read it.
#pragma once

#include <string>

#include "tools/host/system/json_ptr.h"

namespace kova_host {

enum class JsonLayout { one_line, indented };

// `value`, an object or array, as text with a line feed at the end. Reals have at most fifteen
// significant digits, and a point or an exponent, by which readers tell them from integers. What
// could steer a terminal is escaped.
std::string json_document(const json_t* value, JsonLayout layout);

}  // namespace kova_host
