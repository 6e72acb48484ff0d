// Elements and writes of the items of a family with maps.
#pragma once

#include <jansson.h>

#include "framework/catalogue.h"
#include "framework/conversion.h"
#include "framework/row.h"

namespace catalogue {

/// The maps that complete an element, by item ID.
struct ElementMaps {
  StringMap& names;  ///< an ID without a name gains an empty one
  const StringMap& units;
  const StringMap& options;
  const RangeMap& bounds;
};

/// Makes the element of `id` by its row, its ending included. `data` points at the text of a text
/// item, else at the raw unsigned int; it is looked at only if there is a row. `*out` receives the
/// caller's reference, or null with IOT_STATUS_JSON_ERROR (no row) or IOT_STATUS_NOT_READY (memory
/// ran out).
Status create_element(const ElementMaps& maps, const Row* row, unsigned int id, const void* data,
                      json_t** out);

/// Writes a JSON number to the item that takes the writes of `id`, which `row` treats. The checks
/// in order: IOT_STATUS_NOT_READY (no write entry), IOT_STATUS_INVALID_PARAMETER (no number),
/// IOT_STATUS_UNSUPPORTED (no setting, and not of the group of `settings`),
/// IOT_STATUS_WRITE_FAILED. An item without a code is written at code 0, and 0 is written where
/// there is no row.
Status write_item(WriteEntry set_func, RawMap& codes, const Row* row, unsigned int id,
                  unsigned int settings, const json_t* value);

}  // namespace catalogue
