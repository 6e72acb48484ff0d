// Rows: all there is to say of an item, one row an item, and what follows from a row by rule.
// Tables of rows are constexpr; an empty column is a missing entry in the map made from it.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "framework/item_id.h"
#include "framework/status.h"
#include "framework/word_reader.h"

namespace catalogue {

/// Bounds in display units; advice for the host, never enforced.
struct Bounds {
  double min;
  double max;
};

/// What an item is to its reader.
enum class Role : std::uint8_t {
  kNone,      ///< not published: a heading, the presence item, a view that only the module uses
  kIdentity,  ///< fixed for the machine: versions, serial numbers, module data
  kReading,   ///< measured, moves by itself
  kState,     ///< a condition that the device reports
  kSetting,   ///< can be written
  kDefault,   ///< a setting's factory default
};

/// The JSON kind: "bv", or "v" with an integer or a real, or "sv".
enum class Kind : std::uint8_t { kNone, kSwitch, kInteger, kReal, kText };

/// Which part of the raw word counts.
enum class Word : std::uint8_t {
  kWhole,              ///< 32 bits, unsigned
  kLowByteInDocument,  ///< the document takes bits 7..0, a single read all
  kSigned,             ///< 32 bits in two's complement
  kLow16Signed,        ///< bits 15..0 in two's complement
};

/// What a single read answers: found at compile time, because it is asked at every read.
enum class Answer : std::uint8_t { kByColumns, kWord, kSignedWord, kReal, kRoundedReal };

constexpr Answer answer_of(Kind kind, Word word, bool truncated, bool normalised,
                           bool through_text) {
  const bool is_number = kind == Kind::kInteger || kind == Kind::kSwitch;
  if (kind == Kind::kReal) {
    return through_text ? Answer::kRoundedReal : Answer::kReal;
  }
  if (!is_number || truncated || normalised || word == Word::kLow16Signed) {
    return Answer::kByColumns;
  }
  return word == Word::kSigned || through_text ? Answer::kSignedWord : Answer::kWord;
}

/// How the raw word becomes the published value, and a written number the raw word.
struct Shape {
  Role role = Role::kNone;
  Kind kind = Kind::kNone;
  Word word = Word::kWhole;
  double scale = 1;          ///< value = word * scale / divisor + offset
  unsigned int divisor = 1;  ///< 10, 100, ..., where the product would round otherwise
  double offset = 0;
  bool truncated = false;     ///< the value is cut to a whole number, toward zero
  bool normalised = false;    ///< a single read of a switch answers 0 or 1, not the word
  bool through_text = false;  ///< a number is what its text reads as: six digits, or 32 bits

  /// No column, but what follows from them.
  Answer answer = answer_of(kind, word, truncated, normalised, through_text);
};

inline constexpr Shape kNoShape{};

consteval Shape with_role(Shape shape, Role role) {
  shape.role = role;
  return shape;
}

struct Row;

/// Reads a field of several words, or one that another word decides on, and makes its text. The
/// field's status; without a text `out` stays as it was.
using Decoder = Status (*)(const Row& row, const WordReader& device, std::string& out);

/// One item or heading.
struct Row {
  unsigned int id;
  std::string_view name{};
  std::string_view unit{};
  std::string_view options{};                ///< value=label pairs joined by "|"
  std::string_view offered{};                ///< the values a combobox offers, joined by "|"
  std::optional<unsigned int> code{};        ///< the item's code in the device library
  unsigned int words = 1;                    ///< how many codes in a row hold it
  std::optional<unsigned int> asks_first{};  ///< a code that decides whether and how it is read
  std::optional<Bounds> range{};
  Shape as = kNoShape;                               // clang 14 makes no default of a default
  std::string (*text)(unsigned int word) = nullptr;  ///< of an item that is one word's text
  Decoder decode = nullptr;                          ///< of a text that takes more than its word
  unsigned int written_at = 0;  ///< the ID whose code takes the writes, if not its own
  unsigned int default_of = 0;  ///< of a factory default: the setting's ID
  bool is_private = false;      ///< tells one machine or its user from others: serial numbers
  std::string_view note{};      ///< for docs/items.md, what no column says
};

/// "asm". Factory defaults are "w", not "r": hosts offer them as values to write back.
constexpr const char* access(const Shape& as) {
  return as.role == Role::kSetting ? "rw" : as.role == Role::kDefault ? "w" : "r";
}

/// "ui".
constexpr const char* ui_hint(const Row& row) {
  if (row.as.role != Role::kSetting) {
    return "label";
  }
  return row.as.kind == Kind::kSwitch ? "checkbox" : row.offered.empty() ? "textbox" : "combobox";
}

/// True of what can be written.
constexpr bool takes_writes(const Row& row) {
  return row.as.role == Role::kSetting || row.as.role == Role::kDefault;
}

constexpr bool is_published(const Row& row) {
  return row.as.role != Role::kNone && row.code.has_value();
}

/// True of a heading with a kind: the IDs that it leads, if no row is theirs, are treated as it.
constexpr bool leads_items(const Row& row) {
  return !row.code && row.as.kind != Kind::kNone;
}

/// True of a published item that a heading leads.
constexpr bool is_led_by(const Row& row, unsigned int heading) {
  return is_published(row) && row.id > heading && row.id - heading < item_id::span(heading);
}

/// A package of the capability document: the published items that the heading `id` leads, under its
/// name.
struct Package {
  unsigned int id;
  unsigned int unit_id = 0;        ///< the ID whose unit is the package's "bu", if there is one
  std::string_view second_name{};  ///< of the same elements' package in the sheet's second family
  unsigned int second_id = 0;
};

/// How instances are counted: a word that equals 1 tells of `count`; without a count, the word
/// does.
struct Count {
  unsigned int code;
  unsigned int count = 0;
};

/// A family whose items repeat by rule, in one package an instance, numbered from 1. Its rows have
/// the IDs of instance 0 and the codes of instance 1. In names {n} is the number, {i} one less.
struct Instances {
  std::string_view word;  ///< what an instance is called
  unsigned int max;
  unsigned int code_step;
  std::string_view package_suffix;    ///< after the family's name, in a package's
  bool in_item_names = false;         ///< which begin with the package's name and a blank
  bool in_row_order = false;          ///< how a package's elements stand; else in that of their IDs
  std::span<const Count> counted_by;  ///< the first that holds
};

/// A family: what the document, the documentation and the tools need to know beside its rows.
struct Sheet {
  std::string_view name;   ///< in the document
  std::string_view title;  ///< for people
  unsigned int id;         ///< of its items: bits 31..16
  unsigned int presence_code;
  bool present_when_readable = false;  ///< whatever the presence item reads; else when it is not 0
  std::span<const Row> rows;
  std::span<const Package>
      packages{};  ///< in the document's order; none of a family with instances
  std::optional<Instances> instances{};
  std::string_view second_family{};  ///< where the document shows packages again
  unsigned int second_family_id = 0;
  Status status_when_read = IOT_STATUS_SUCCESS;  ///< of a single read that has filled the value
  std::optional<Status> status_without_value{};  ///< of one for which the machine has no value
  std::string_view note{};                       ///< for docs/items.md
};

}  // namespace catalogue
