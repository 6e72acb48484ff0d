// Numbers to text and back, the same under every locale: the agent that loads the module may have
// chosen one that writes decimal commas.
#pragma once

#include <string>
#include <string_view>

/// The text that a stream in its default format prints in the classic locale: integers in decimal,
/// reals with six significant digits and no trailing zeros ("36.85", "1e-05").
template <typename Number>
std::string To_String(Number value);
template <>
std::string To_String(unsigned int value);
template <>
std::string To_String(short value);
template <>
std::string To_String(double value);

/// Hexadecimal digits, at least so many: "05".
std::string hexadecimal(unsigned int value, std::size_t least = 1);

/// The decimal number at the start of `text`, after blanks and a sign; what follows it is ignored.
/// 0 when there is none ("N/A"), or when it lies beyond the range of double.
double real_from_text(std::string_view text);

/// As above for integers: clamped to 64 bits, of which the low 32 are the result.
int integer_from_text(std::string_view text);

/// `value` rounded to the six significant digits that To_String writes: the number that its text
/// reads as, to the bit, and found without the text for numbers of three decimals.
double to_six_digits(double value);
