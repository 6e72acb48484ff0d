// Numbers to text and back, the same under every locale: the agent that loads the module may have
// chosen one that writes decimal commas.
#pragma once

#include <string>

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

/// What strtod reads at the start of `text` in the "C" locale, decimal, hexadecimal, "inf" and
/// "nan"; 0 when there is no number ("N/A"). JSON has no infinity and no NaN: no element is made of
/// one, and a value keeps what it had.
double real_from_text(const std::string& text);

/// What strtol reads in decimal, clamped to 64 bits, of which the low 32 are the result.
int integer_from_text(const std::string& text);

/// `value` rounded to the six significant digits that To_String writes: the number that its text
/// reads as, to the bit, and found without the text for numbers of three decimals.
double to_six_digits(double value);
