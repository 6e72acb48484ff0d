// Items whose reading is a text: the family's rows say whether it is published as a string, an
// integer or a real.
#pragma once

#include <jansson.h>

#include <span>
#include <string>

#include "framework/catalogue.h"
#include "framework/status.h"

namespace text_item {

/// What stands in a map of readings for one that could not be made.
inline constexpr const char* kNotAvailable = "N/A";

/// A family of such items. Rows and maps are keyed by item ID with bits 7..0 clear.
struct Family {
  unsigned int family_id;
  std::span<const catalogue::Row> rows;
  StringMap& names;  ///< an unknown ID gains an empty name
  const StringMap& units;
  const RangeMap& bounds;
};

/// Sets the caller's value from an item's text: numbers as text_number.h reads them, strings up to
/// the first NUL. A value of another JSON type, and a string that is not UTF-8, leave it as it is.
void set_value(const Family& family, unsigned int id, const std::string& text, json_t* value);

/// Makes the read-only element of an item, its ending included. `text` is looked at only for an ID
/// of this family. `*out` receives the caller's reference, or null with IOT_STATUS_JSON_ERROR
/// (another family's ID, text that is not UTF-8) or IOT_STATUS_NOT_READY (memory ran out).
Status create_element(const Family& family, unsigned int id, const std::string* text, json_t** out);

}  // namespace text_item
