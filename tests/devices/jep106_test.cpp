// The manufacturers' ID words of the JEP106 list.
#include <gtest/gtest.h>

#include <bit>

#include "devices/sdram/sdram_func.h"

namespace {

// Named are exactly 126 codes of banks 1 to 11 and 23 of bank 12, with odd parity in both bytes.
bool has_odd_parity(unsigned int byte) {
  return std::popcount(byte) % 2 == 1;
}

TEST(Jep106, NamesExactlyTheAssignedWords) {
  unsigned int named = 0;
  for (unsigned int word = 0; word <= 0xFFFF; ++word) {
    const unsigned int code = word >> 8 & 0x7F;
    const unsigned int bank = (word & 0x7F) + 1;
    const bool assigned = has_odd_parity(word >> 8) && has_odd_parity(word & 0xFF) && code != 0 &&
                          code != 127 && (bank < 12 || (bank == 12 && code <= 23));
    const std::string name = SdRamFunc::getManufacture(word);
    ASSERT_EQ(!name.empty() && name != "Unknown", assigned) << std::hex << word << ' ' << name;
    named += assigned ? 1 : 0;
    ASSERT_EQ(SdRamFunc::getManufacture(word | 0x10000), "Unknown") << std::hex << word;
  }
  EXPECT_EQ(named, 1409U);
}

TEST(Jep106, NamesStandInTheStandardsOrder) {
  const struct {
    unsigned int continuations;
    const char *first, *middle, *last;  // codes 1, 63 and 126
  } banks[] = {
      {0x80, "AMD", "Silicon Storage Technology", "Numonyx Corporation"},
      {0x01, "Cirrus Logic", "Broadcom", "3COM"},
      {0x02, "Camintonn Corporation", "DSP Group", "Elpida"},
      {0x83, "Solectron", "Sanera Systems", "TeraChip"},
      {0x04, "T-RAM Incorporated", "Pericom", "Xyratex"},
      {0x85, "Specular Networks", "Avago Technologies", "W5 Networks"},
      {0x86, "MOVEKING", "Novafora Inc", "Triad Semiconductor Inc"},
      {0x07, "Siklu Communication Ltd", "Ramsway", "Intelligence Silicon Technology"},
      {0x08, "3D PLUS", "Skymedi Corporation", "Starsway Technology Limited"},
      {0x89, "Weltronics Co LTD", "Pegasus Semiconductor (Shanghai) Co",
       "ALLFLASH Technology Limited"},
      {0x8A, "Foerd Technology Co Ltd", "Shanghai Han Rong Microelectronics Co",
       "Shenzhen Reeinno Technology Co Ltd"},
  };
  for (const auto& bank : banks) {
    EXPECT_EQ(SdRamFunc::getManufacture(0x0100 | bank.continuations), bank.first);
    EXPECT_EQ(SdRamFunc::getManufacture(0xBF00 | bank.continuations), bank.middle);
    EXPECT_EQ(SdRamFunc::getManufacture(0xFE00 | bank.continuations), bank.last);
  }
  EXPECT_EQ(SdRamFunc::getManufacture(0x010B), "ABIT Electronics (Shenzhen) Co Ltd");
  EXPECT_EQ(SdRamFunc::getManufacture(0x8C0B), "Black Sesame Technologies Inc");
  EXPECT_EQ(SdRamFunc::getManufacture(0x970B), "Guangzhou Longdao Network Tech Co");
}

}  // namespace
