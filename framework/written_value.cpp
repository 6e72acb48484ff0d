// Conversions of written values; every result is defined for every input.
#include "framework/written_value.h"

std::uint32_t integer_word(const json_t* value) {
  return static_cast<std::uint32_t>(json_integer_value(value));
}

std::uint32_t switch_word(const json_t* value) {
  return json_integer_value(value) > 0 ? 1 : 0;
}

std::uint32_t scaled_word(const json_t* value, std::uint32_t scale) {
  if (!json_is_real(value)) {
    return integer_word(value) * scale;
  }
  // 2^63: the first double above every 64-bit integer. NaN fails both comparisons.
  constexpr double kTooLarge = 9223372036854775808.0;
  const double scaled = json_real_value(value) * scale;
  if (!(scaled >= -kTooLarge && scaled < kTooLarge)) {
    return 0;
  }
  return static_cast<std::uint32_t>(static_cast<std::int64_t>(scaled));
}
