// Items by their rows: the one place where a raw word becomes a published value and an element, and
// a written number a raw word.
#pragma once

#include <jansson.h>

#include <cstdint>
#include <string>

#include "framework/catalogue.h"
#include "framework/row.h"

namespace catalogue {

// The largest temperature word, 429,496,729.5 K, still fits an int.
inline int truncated_of(const Shape& as, unsigned int raw) {
  return static_cast<int>(real_of(as, raw));
}

/// Sets the caller's value from the raw word of an item that is no text: an integer or a real, or
/// nothing where the JSON type is another. A part of every single read, hence inline.
[[gnu::always_inline]] inline void publish(const Shape& as, unsigned int raw, json_t* value) {
  switch (as.kind) {
    case Kind::kReal:
      json_real_set(value, real_of(as, raw));
      break;
    case Kind::kInteger:
      json_integer_set(value, as.truncated ? json_int_t{truncated_of(as, raw)} : json_int_t{raw});
      break;
    case Kind::kSwitch:
      json_integer_set(value, as.normalised ? json_int_t{raw != 0} : json_int_t{raw});
      break;
    case Kind::kText:
    case Kind::kNone:
      break;
  }
}

/// Makes the first keys of an item's element from its raw word.
Status create_first_keys(const Row& row, const std::string& name, unsigned int id, unsigned int raw,
                         json_t** out);

/// The raw word that a written JSON number becomes; 0 for a shape that takes no numbers.
std::uint32_t word_of(const Shape& as, const json_t* value);

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

/// Writes a JSON number to the code of the item `target`. The checks in order: IOT_STATUS_NOT_READY
/// (no write entry), IOT_STATUS_INVALID_PARAMETER (no number), IOT_STATUS_UNSUPPORTED (not
/// `writable`), IOT_STATUS_WRITE_FAILED. A target without a code is written at code 0.
Status write_item(WriteEntry set_func, RawMap& codes, bool writable, unsigned int target,
                  const Shape& as, const json_t* value);

}  // namespace catalogue
