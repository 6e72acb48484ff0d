// Where the value of a device code comes from: a stored word, or a signal that moves.
#pragma once

#include <chrono>
#include <cstdint>
#include <variant>

#include "simulator/trace.h"

namespace kova_sim {

/// A stored word: what the description gives, or what was written last.
struct Stored {
  std::uint32_t word = 0;
};

/// A straight line between two values, reached after `seconds`; then it holds, or starts again.
struct Ramp {
  std::int64_t from = 0;
  std::int64_t to = 0;
  double seconds = 1;
  bool wrap = false;
};

/// mean + amplitude * sin(2 pi t / period).
struct Sine {
  double mean = 0;
  double amplitude = 0;
  double period_seconds = 1;
};

/// Evenly spread over mean - amplitude .. mean + amplitude, a new sample at every read. The n-th
/// sample depends on the seed and on n alone, so two runs see the same readings.
struct Noise {
  double mean = 0;
  double amplitude = 0;
  std::uint64_t seed = 0;
};

using ValueSource = std::variant<Stored, Ramp, Sine, Noise, SharedTrace>;

/// The range of a raw word, which the host may take as signed or as unsigned.
inline constexpr std::int64_t WORD_MIN = INT32_MIN;
inline constexpr std::int64_t WORD_MAX = UINT32_MAX;

/// The 32-bit word of a number between WORD_MIN and WORD_MAX; negative ones in two's complement.
constexpr std::uint32_t to_word(std::int64_t number) {
  return static_cast<std::uint32_t>(static_cast<std::uint64_t>(number));
}

/// The moment of a trace that a time after the start falls into.
std::uint64_t whole_milliseconds(std::chrono::microseconds time);

/// The word that `source` shows at a time after the start, at its read number `reads` (1 for the
/// first). A trace that fails then without storing a word shows 0.
std::uint32_t sample(const ValueSource& source, std::chrono::microseconds time,
                     std::uint64_t reads);

}  // namespace kova_sim
