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
  if (word < Word::kSigned) {
    const bool is_byte = view == View::kDocument && word == Word::kLowByteInDocument;
    return is_byte ? raw & 0xFFU : raw;
  }
  return word == Word::kSigned ? static_cast<std::int32_t>(raw)
                               : static_cast<std::int16_t>(static_cast<std::uint16_t>(raw));
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

inline double real_value(const Shape& as, std::uint32_t raw, View view) {
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
void publish_by_columns(const Shape& as, std::uint32_t raw, json_t* value);

/// The same, without a look at the columns for most items.
[[gnu::always_inline]] inline void publish(const Shape& as, std::uint32_t raw, json_t* value) {
  if (as.answer == Answer::kWord) {
    json_integer_set(value, raw);
  } else if (as.answer == Answer::kReal) {
    json_real_set(value, real_of(as, raw));
  } else if (as.answer == Answer::kSignedWord) {
    json_integer_set(value, static_cast<std::int32_t>(raw));
  } else if (as.answer == Answer::kRoundedReal) {
    json_real_set(value, to_six_digits(real_of(as, raw)));
  } else {
    publish_by_columns(as, raw, value);
  }
}

/// Makes the first keys of an item's element from its raw word; IOT_STATUS_JSON_ERROR, and `*out`
/// as it was, for a text.
Status create_first_keys(const Row& row, const std::string& name, unsigned int id,
                         std::uint32_t raw, json_t** out);

/// The text that a word by itself is: what the row's function makes of it, or its number.
std::string text_of(const Row& row, std::uint32_t raw);

/// The value in steps, truncated toward zero to 64 bits, of which the low 32 are sent in two's
/// complement; 0 when it does not fit 64 bits. An integer is multiplied in 32-bit wrapping
/// arithmetic.
std::uint32_t scaled_word(const json_t* value, std::uint32_t steps);

/// The raw word that a written JSON number becomes: of a real its steps, of an integer the low 32
/// bits (a real gives 0), of a switch 1 for an integer greater than 0, else 0; 0 for a shape that
/// takes no numbers. Where only 16 bits count, the others are 0.
[[gnu::always_inline]] inline std::uint32_t word_of(const Shape& as, const json_t* value) {
  if (as.kind == Kind::kSwitch) {
    return json_integer_value(value) > 0 ? 1 : 0;
  }
  const std::uint32_t word = as.kind == Kind::kReal ? scaled_word(value, steps_per_unit(as))
                             : as.kind == Kind::kInteger
                                 ? static_cast<std::uint32_t>(json_integer_value(value))
                                 : 0;
  return as.word == Word::kLow16Signed ? word & 0xFFFFU : word;
}

}  // namespace catalogue
