// Items whose reading is a text: the family's rows say which words it is decoded from, and whether
// it is published as a string, an integer or a real.
#pragma once

#include <jansson.h>

#include <array>
#include <cstdint>
#include <span>
#include <string>

#include "framework/catalogue.h"
#include "framework/row_check.h"
#include "framework/status.h"
#include "framework/word_reader.h"

namespace text_item {

/// What stands for a text that could not be made.
inline constexpr const char* kNotAvailable = "N/A";

/// Where the row of a group (bits 15..8 of an ID) stands, or 255.
using Places = std::array<std::uint8_t, 256>;

/// A family of such items, or fields. Rows and maps are keyed by field ID: an item ID with bits
/// 7..0 clear. There is one row a group.
struct Family {
  const catalogue::Sheet& sheet;
  Places places;         ///< of the sheet's rows
  Status no_such_field;  ///< what a field ID without a row reads as
  StringMap& names;      ///< an unknown ID gains an empty name
  const StringMap& units;
  const RangeMap& bounds;
};

/// Refuses a row that does not tell how it is read, or that tells what no field can do. What it
/// throws ends the compilation.
consteval void check_field(const catalogue::Row& row) {
  using catalogue::Kind;
  catalogue::check_row(row);
  if (!row.code) {
    throw "a field without a code";
  }
  if (row.as.kind != Kind::kText && row.as.kind != Kind::kInteger && row.as.kind != Kind::kReal) {
    throw "a field that is no text, integer or real (column `as`)";
  }
  if ((row.words != 1 || row.asks_first) != (row.decode != nullptr)) {
    throw "a field of several words without its decoder, or another field with one";
  }
  if (row.as.kind != Kind::kText && (row.text != nullptr || row.decode != nullptr)) {
    throw "a number with a function for its text";
  }
  if (row.decode != nullptr && row.text != nullptr) {
    throw "a field with two functions for its text";
  }
  if (row.as.through_text != (row.as.kind != Kind::kText)) {
    throw "a field's number is read through its text (column `as`)";
  }
  if (takes_writes(row) || !row.options.empty()) {
    throw "a field that takes writes or has options";
  }
}

consteval Places places_of(std::span<const catalogue::Row> rows) {
  Places places{};
  places.fill(UINT8_MAX);
  for (std::size_t place = 0; place < rows.size(); ++place) {
    check_field(rows[place]);
    std::uint8_t& taken = places.at((rows[place].id >> 8) & 0xFFU);
    if (taken != UINT8_MAX) {
      throw "two fields in one group";
    }
    taken = static_cast<std::uint8_t>(place);
  }
  return places;
}

/// Decodes a field of the family to its text. A failed read gives the device library's own code
/// and leaves `out`.
Status decode(const Family& family, const WordReader& device, unsigned int field_id,
              std::string& out);

/// As above, with "N/A" where there is no text.
Status read_text(const Family& family, const WordReader& device, unsigned int field_id,
                 std::string& out);

/// Adds a field's text to `*map`, "N/A" when it cannot be read; an entry already there stays.
Status add_text(const Family& family, const WordReader& device, unsigned int field_id,
                StringMap* map);

/// Reads a field that is a real. IOT_STATUS_UNDEFINED_ITEM for another; `*number` is then, and
/// after a failed read, as it was.
Status read_real(const Family& family, const WordReader& device, unsigned int field_id,
                 double* number);

/// Reads an item into the caller's value: a number as its text would read, a string up to its first
/// NUL. A value of another JSON type, and a string that is not UTF-8, leave it as it is.
Status read_value(const Family& family, const WordReader& device, unsigned int id, json_t* value);

/// Makes the read-only element of an item, its ending included. `text` is looked at only for an ID
/// of this family. `*out` receives the caller's reference, or null with IOT_STATUS_JSON_ERROR
/// (another family's ID, text that is not UTF-8) or IOT_STATUS_NOT_READY (memory ran out).
Status create_element(const Family& family, unsigned int id, const std::string* text, json_t** out);

}  // namespace text_item
