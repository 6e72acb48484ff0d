// Locale-independent conversions between numbers and texts.
#include "framework/text_number.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>

namespace {

// Room for 64-bit integers and for reals of six digits with an exponent.
using NumberBuffer = std::array<char, 32>;

template <typename... Format>
std::string written(Format... format) {
  NumberBuffer buffer{};
  const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), format...);
  return {buffer.data(), result.ptr};
}

// Drops the blanks and the plus sign that std::from_chars does not take. A sign after the plus
// makes the text no number.
std::string_view without_blanks_and_plus(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
  if (text.starts_with('+')) {
    text.remove_prefix(1);
    return text.starts_with('-') ? std::string_view{} : text;
  }
  return text;
}

}  // namespace

template <>
std::string To_String(unsigned int value) {
  return written(value);
}

template <>
std::string To_String(short value) {
  return written(value);
}

template <>
std::string To_String(double value) {
  constexpr int kSignificantDigits = 6;
  return written(value, std::chars_format::general, kSignificantDigits);
}

std::string hexadecimal(unsigned int value, std::size_t least) {
  NumberBuffer buffer{};
  const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, 16);
  std::string text(buffer.data(), result.ptr);
  text.insert(0, least - std::min(least, text.size()), '0');
  return text;
}

double to_six_digits(double value) {
  if (value == 0) {
    return value;
  }
  // A number next to one of at most three decimals and six digits has that one's text, and reads
  // as the double nearest to it: so does the division, which rounds correctly.
  constexpr double kNext = 1e-7;  // above what a conversion errs, below half a sixth digit's step
  const double thousandths = value * 1000;
  if (std::abs(thousandths) < 1e6) {
    const double half = thousandths < 0 ? -0.5 : 0.5;
    const auto whole = static_cast<double>(static_cast<std::int64_t>(thousandths + half));
    if (whole != 0 && std::abs(thousandths - whole) < kNext) {
      return whole / 1000;
    }
  }
  return real_from_text(To_String(value));
}

double real_from_text(std::string_view text) {
  text = without_blanks_and_plus(text);
  double value = 0;
  std::from_chars(text.data(), text.data() + text.size(), value);
  return std::isfinite(value) ? value : 0;  // "inf" and "nan" are numbers to from_chars only
}

int integer_from_text(std::string_view text) {
  text = without_blanks_and_plus(text);
  std::int64_t value = 0;
  if (std::from_chars(text.data(), text.data() + text.size(), value).ec ==
      std::errc::result_out_of_range) {
    using Limits = std::numeric_limits<std::int64_t>;
    value = text.starts_with('-') ? Limits::min() : Limits::max();
  }
  return static_cast<int>(static_cast<std::uint32_t>(value));
}
