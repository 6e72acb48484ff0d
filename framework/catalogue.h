// Catalogues: the ordered maps made from a family's rows, and the lookups and raw reads that every
// family binds to its own maps.
#pragma once

#include <jansson.h>

#include <map>
#include <span>
#include <string>

#include "framework/device_library.h"
#include "framework/row.h"
#include "framework/row_table.h"
#include "framework/status.h"

/// The two ends of a permitted range.
enum ENUM_MIN_MAX { MIN = 0, MAX = 1 };

using Range = std::map<ENUM_MIN_MAX, double>;
using StringMap = std::map<unsigned int, std::string>;
using RawMap = std::map<unsigned int, unsigned int>;
using RangeMap = std::map<unsigned int, Range>;

namespace catalogue {

StringMap name_map(std::span<const Row> rows);
StringMap unit_map(std::span<const Row> rows);
StringMap option_map(std::span<const Row> rows);
RawMap code_map(std::span<const Row> rows);
RangeMap bound_map(std::span<const Row> rows);

/// Assigns the entry of `id` to `*out`; IOT_STATUS_NOT_FOUND leaves `*out` as it was.
Status get_string_from_map(const StringMap& map, unsigned int id, std::string* out);

/// The entry of `id`, or "".
std::string text_by_id(const StringMap& map, unsigned int id);

/// The range of `id`, or an empty map.
Range range_by_id(const RangeMap& map, unsigned int id);

/// Replaces both ends of the range of `id`, or makes it.
void update_range(RangeMap& map, unsigned int id, double min, double max);

// Those below are the road of every single read or write and are made part of it: the calls alone
// would cost a tenth of a read from a device library that answers at once.

/// The code of an item. An ID without one gets code 0, and keeps it.
[[gnu::always_inline]] inline unsigned int code_of(RawMap& codes, unsigned int id) {
  const auto found = codes.find(id);
  return found != codes.end() ? found->second : codes[id];
}

/// True when the presence item reads as non-zero.
[[gnu::always_inline]] inline bool is_available(ReadEntry get_func, RawMap& codes,
                                                unsigned int presence_id) {
  if (get_func == nullptr) {
    return false;
  }
  // Asked before every read, so not searched for: it has the lowest ID of its family.
  const auto lowest = codes.begin();
  const unsigned int code =
      lowest != codes.end() && lowest->first == presence_id ? lowest->second : codes[presence_id];
  unsigned int present = 0;
  return get_func(code, &present) == 0 && present != 0;
}

/// Reads one raw word. An ID without a code is read as code 0 and keeps that entry.
/// IOT_STATUS_NOT_READY without a read entry; IOT_STATUS_READ_FAILED leaves `*value` as it was.
[[gnu::always_inline]] inline Status read_raw(ReadEntry get_func, RawMap& codes, unsigned int id,
                                              unsigned int* value) {
  if (get_func == nullptr) {
    return IOT_STATUS_NOT_READY;
  }
  unsigned int raw = 0;
  if (get_func(code_of(codes, id), &raw) != 0) {
    return IOT_STATUS_READ_FAILED;
  }
  *value = raw;
  return IOT_STATUS_SUCCESS;
}

/// Refills `*out` with the raw words of the items first..end-1 that can be read, after asking for
/// presence: an absent family leaves `*out` as it was. `get_func` is a reference because the
/// family's entry is looked at afresh for every item.
void read_raw_range(const ReadEntry& get_func, RawMap& codes, unsigned int presence_id,
                    unsigned int first, unsigned int end, RawMap* out);

/// Reads the table's texts and refills `*out`; an empty text is not stored.
/// IOT_STATUS_NOT_READY without a read entry; IOT_STATUS_READ_FAILED, and `*out` as it was, when no
/// item could be read.
Status read_texts(const ReadEntry& get_func, RawMap& codes, const RowTable& table, StringMap* out);

/// As above, and sets the caller's JSON string to the text of `id`, up to its first NUL; text that
/// is not UTF-8 leaves it as it was. IOT_STATUS_NOT_FOUND when `id` has no text.
Status publish_text(const ReadEntry& get_func, RawMap& codes, const RowTable& table,
                    unsigned int id, json_t* value);

}  // namespace catalogue
