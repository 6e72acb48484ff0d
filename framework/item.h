// Elements of the items of a family with maps.
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

}  // namespace catalogue
