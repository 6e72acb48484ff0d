// The JEP106 names, kept as one block of characters with an index computed at compile time: a
// table of pointers would have to be relocated in every process that loads the module.
#include "devices/sdram/jep106.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <limits>

namespace jep106 {
namespace {

constexpr unsigned int kCodesPerBank = 126;

// Each name ends with a NUL; they stand in the standard's order, so that the place tells the code.
constexpr char kNames[] =
#include "devices/sdram/jep106_names.inc"
    ;
constexpr std::string_view kAllNames(kNames, sizeof kNames - 1);
constexpr auto kCount = static_cast<std::size_t>(std::ranges::count(kAllNames, '\0'));

using Offset = std::uint16_t;
static_assert(kAllNames.size() <= std::numeric_limits<Offset>::max());

// Where each name starts, and the end of the last.
constexpr auto kStarts = [] {
  std::array<Offset, kCount + 1> starts{};
  for (std::size_t row = 0; row < kCount; ++row) {
    starts[row + 1] = static_cast<Offset>(kAllNames.find('\0', starts[row]) + 1);
  }
  return starts;
}();

constexpr unsigned int with_odd_parity(unsigned int seven_bits) {
  return std::popcount(seven_bits) % 2 == 0 ? seven_bits | 0x80U : seven_bits;
}

}  // namespace

std::string_view manufacturer(unsigned int id_word) {
  const unsigned int code = (id_word >> 8) & 0x7FU;
  const unsigned int continuations = id_word & 0x7FU;
  const unsigned int row = continuations * kCodesPerBank + code - 1;
  const bool is_the_rows_word =
      code >= 1 && code <= kCodesPerBank && row < kCount &&
      id_word == (with_odd_parity(code) << 8 | with_odd_parity(continuations));
  if (!is_the_rows_word) {
    return "Unknown";
  }
  const std::size_t start = kStarts[row];
  return kAllNames.substr(start, kStarts[row + 1] - start - 1);
}

}  // namespace jep106
