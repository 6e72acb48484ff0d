// Locale-independent conversions between numbers and texts.
#include "framework/text_number.h"

#include <langinfo.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace {

// Room for 64-bit integers and for reals of six digits with an exponent.
using NumberBuffer = std::array<char, 32>;

template <typename... Format>
std::string written(Format... format) {
  NumberBuffer buffer{};
  const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), format...);
  return {buffer.data(), result.ptr};
}

// A number as the host's locale would write it, which strtod looks for: the locale is the host's
// own and stays as it is. Where it writes a comma, a comma is no part of the number.
std::string with_hosts_point(std::string text) {
  const std::string point = nl_langinfo(RADIXCHAR);
  if (point != ".") {
    text.resize(std::min(text.find(point), text.size()));
    if (const std::size_t at = text.find('.'); at != std::string::npos) {
      text.replace(at, 1, point);
    }
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

double real_from_text(const std::string& text) {
  return std::strtod(with_hosts_point(text).c_str(), nullptr);
}

int integer_from_text(const std::string& text) {
  return static_cast<int>(static_cast<std::uint32_t>(std::strtoll(text.c_str(), nullptr, 10)));
}
