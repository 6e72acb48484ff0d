// JSON text with the shortest digits that give every real again.
#pragma once

#include <string>

#include "json_ptr.h"

namespace kovactl {

enum class JsonLayout { one_line, indented };

// `value` as text, with a line feed at the end. (jansson's own writer prints 36.85 with seventeen
// digits, which nobody wants to read and no device has measured.)
std::string json_document(const json_t* value, JsonLayout layout);

}  // namespace kovactl
