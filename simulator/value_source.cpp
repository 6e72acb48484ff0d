// Samples of stored words, ramps, sines and noise.
#include "simulator/value_source.h"

#include <cmath>
#include <numbers>

namespace kova_sim {
namespace {

// Fractions round to the nearest whole raw unit. The description's checks keep every signal
// between WORD_MIN and WORD_MAX.
std::uint32_t nearest_word(double number) {
  return to_word(std::llround(number));
}

// The splitmix64 finaliser: neighbouring sample numbers give unrelated values, on every machine
// the same, which the standard library's distributions do not promise.
std::uint64_t scramble(std::uint64_t state) {
  state += 0x9E3779B97F4A7C15U;
  state = (state ^ (state >> 30)) * 0xBF58476D1CE4E5B9U;
  state = (state ^ (state >> 27)) * 0x94D049BB133111EBU;
  return state ^ (state >> 31);
}

struct Sampler {
  std::chrono::microseconds time;
  double seconds;
  std::uint64_t reads;

  std::uint32_t operator()(const Stored& stored) const { return stored.word; }

  std::uint32_t operator()(const Ramp& ramp) const {
    const double at =
        ramp.wrap ? std::fmod(seconds, ramp.seconds) : std::fmin(seconds, ramp.seconds);
    return nearest_word(static_cast<double>(ramp.from) +
                        static_cast<double>(ramp.to - ramp.from) * (at / ramp.seconds));
  }

  std::uint32_t operator()(const Sine& sine) const {
    const double turn = std::fmod(seconds, sine.period_seconds) / sine.period_seconds;
    return nearest_word(sine.mean + sine.amplitude * std::sin(2 * std::numbers::pi * turn));
  }

  std::uint32_t operator()(const Noise& noise) const {
    // The top 53 bits fill a double's significand: 0 <= unit < 1.
    const std::uint64_t bits = scramble(noise.seed ^ scramble(reads)) >> 11;
    const double unit = static_cast<double>(bits) * 0x1p-53;
    return nearest_word(noise.mean + noise.amplitude * (2 * unit - 1));
  }

  std::uint32_t operator()(const SharedTrace& trace) const {
    return trace->look(whole_milliseconds(time)).word.value_or(0);
  }
};

}  // namespace

std::uint64_t whole_milliseconds(std::chrono::microseconds time) {
  return static_cast<std::uint64_t>(time.count() / 1000);
}

std::uint32_t sample(const ValueSource& source, std::chrono::microseconds time,
                     std::uint64_t reads) {
  const double seconds = static_cast<double>(time.count()) / 1e6;
  return std::visit(Sampler{time, seconds, reads}, source);
}

}  // namespace kova_sim
