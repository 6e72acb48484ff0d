// The one conversion from a raw word to what is published of it, and from a written number to the
// raw word, as the item's row says. All families read and write through it.
#pragma once

#include <jansson.h>

#include <cstdint>
#include <string>

#include "framework/row.h"
#include "framework/text_number.h"

namespace catalogue {

/// Where a value is published: some items show less of their word in the document.
enum class View : std::uint8_t { kDocument, kSingleRead };

/// The part of the raw word that counts.
constexpr std::int64_t part_of(Word word, std::uint32_t raw, View view) {
  switch (word) {
    case Word::kSigned:
      return static_cast<std::int32_t>(raw);
    case Word::kLow16Signed:
      return static_cast<std::int16_t>(static_cast<std::uint16_t>(raw));
    case Word::kLowByteInDocument:
      return view == View::kDocument ? raw & 0xFFU : raw;
    case Word::kWhole:
      break;
  }
  return raw;
}

/// What one step of the raw word is in the value's unit.
constexpr double step_of(const Shape& as) {
  return as.scale / as.divisor;
}

/// The raw word in the item's unit.
constexpr double real_of(const Shape& as, std::uint32_t raw, View view = View::kSingleRead) {
  const double scaled = static_cast<double>(part_of(as.word, raw, view)) * as.scale;
  return (as.divisor == 1 ? scaled : scaled / as.divisor) + as.offset;
}

/// The raw word as a whole number.
constexpr std::int64_t whole_of(const Shape& as, std::uint32_t raw, View view) {
  return as.truncated ? static_cast<std::int64_t>(real_of(as, raw, view))
                      : part_of(as.word, raw, view);
}

/// How many steps of the raw word are one unit of the value: 10 for a scale of 0.1.
constexpr std::uint32_t steps_per_unit(const Shape& as) {
  const double steps = 1 / step_of(as);
  const auto whole = static_cast<std::uint32_t>(steps);
  return steps - whole < 0.5 ? whole : whole + 1;
}

// The values of the kinds. Parts of every single read, like what calls them, hence inline.

[[gnu::always_inline]] inline double real_value(const Shape& as, std::uint32_t raw, View view) {
  const double real = real_of(as, raw, view);
  return as.through_text ? to_six_digits(real) : real;
}

/// The document, and a number that is read from its text, have integers of 32 bits.
constexpr std::int64_t integer_value(const Shape& as, std::uint32_t raw, View view) {
  const std::int64_t whole = whole_of(as, raw, view);
  return view == View::kDocument || as.through_text ? static_cast<std::int32_t>(whole) : whole;
}

constexpr std::int64_t switch_value(const Shape& as, std::uint32_t raw, View view) {
  const std::int64_t part = part_of(as.word, raw, view);
  return view == View::kDocument || as.normalised ? std::int64_t{part != 0} : part;
}

/// Sets the caller's value from the raw word of an item that is no text: an integer or a real, or
/// nothing where the JSON type is another.
[[gnu::always_inline]] inline void publish(const Shape& as, std::uint32_t raw, json_t* value) {
  switch (as.kind) {
    case Kind::kReal:
      json_real_set(value, real_value(as, raw, View::kSingleRead));
      break;
    case Kind::kInteger:
      json_integer_set(value, integer_value(as, raw, View::kSingleRead));
      break;
    case Kind::kSwitch:
      json_integer_set(value, switch_value(as, raw, View::kSingleRead));
      break;
    case Kind::kText:
    case Kind::kNone:
      break;
  }
}

/// Makes the first keys of an item's element from its raw word; IOT_STATUS_JSON_ERROR, and `*out`
/// as it was, for a text.
Status create_first_keys(const Row& row, const std::string& name, unsigned int id,
                         std::uint32_t raw, json_t** out);

/// The text that a word by itself is: what the row's function makes of it, or its number.
std::string text_of(const Row& row, std::uint32_t raw);

/// The raw word that a written JSON number becomes; 0 for a shape that takes no numbers. A switch
/// is 1 for an integer greater than 0, else 0; an integer its low 32 bits, and a real 0; a real is
/// multiplied by the steps of a unit, truncated toward zero to 64 bits and sent as the low 32 in
/// two's complement, or as 0 when it does not fit 64 bits (an integer is then multiplied in 32-bit
/// wrapping arithmetic). Where only 16 bits count, the others are 0.
std::uint32_t word_of(const Shape& as, const json_t* value);

}  // namespace catalogue
