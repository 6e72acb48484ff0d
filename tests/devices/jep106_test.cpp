// The manufacturers' ID words of the JEP106 list.
#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <set>

#include "devices/sdram/sdram_func.h"

namespace {

// The list has 126 codes in each of banks 1 to 11 and 23 in bank 12. An ID word holds the code
// above the number of continuation codes, each byte with odd parity.
constexpr unsigned int kNames = 11 * 126 + 23;

constexpr unsigned int with_odd_parity(unsigned int seven_bits) {
  return std::popcount(seven_bits) % 2 == 0 ? seven_bits | 0x80U : seven_bits;
}

constexpr unsigned int word_of(unsigned int row) {
  return with_odd_parity(row % 126 + 1) << 8 | with_odd_parity(row / 126);
}

// One checksum, 64-bit FNV-1a over the published list's names in order, each with a NUL: two names
// that change places are seen.
TEST(Jep106, NamesStandInTheStandardsOrder) {
  std::uint64_t sum = 0xCBF29CE484222325;
  for (unsigned int row = 0; row < kNames; ++row) {
    for (const char character : SdRamFunc::getManufacture(word_of(row)) + '\0') {
      sum = (sum ^ static_cast<unsigned char>(character)) * 0x100000001B3;
    }
  }
  EXPECT_EQ(sum, 0x3645463DC9410C32U);
  EXPECT_EQ(SdRamFunc::getManufacture(0x8900), "Unknown");
  EXPECT_EQ(SdRamFunc::getManufacture(0x8980), "Intel");
}

TEST(Jep106, OtherWordsHaveNoName) {
  std::set<unsigned int> assigned;
  for (unsigned int row = 0; row < kNames; ++row) {
    assigned.insert(word_of(row));
  }
  for (unsigned int word = 0; word <= 0x1FFFF; ++word) {
    ASSERT_EQ(SdRamFunc::getManufacture(word) == "Unknown", !assigned.contains(word))
        << std::hex << word;
  }
}

}  // namespace
