// From the JSON number of a write to the raw 32-bit word that the device library is given.
#pragma once

#include <jansson.h>

#include <cstdint>

/// The low 32 bits of a JSON integer; 0 for a real, which reads as the integer 0.
std::uint32_t integer_word(const json_t* value);

/// 1 for a JSON integer greater than 0, else 0 (a real gives 0).
std::uint32_t switch_word(const json_t* value);

/// The value times `scale` as a raw word: a real is multiplied, truncated toward zero to 64 bits
/// and sent as the low 32 bits in two's complement, or as 0 when it does not fit 64 bits; an
/// integer is multiplied in 32-bit wrapping arithmetic.
std::uint32_t scaled_word(const json_t* value, std::uint32_t scale);
