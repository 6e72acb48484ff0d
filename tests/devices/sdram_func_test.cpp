// Decoding of SPD words: texts, name tables, failing and half-failing reads.
#include "devices/sdram/sdram_func.h"

#include <gtest/gtest.h>

#include <bit>
#include <optional>
#include <string>
#include <utility>

#include "devices/sdram/sdram_items.h"
#include "tests/support/device_double.h"
#include "tests/support/reference_machine.h"

namespace {

constexpr std::uint32_t kSpd = 0x00A00000;
constexpr std::uint32_t kOwnCode = 0x77;

using Decoded = std::pair<Status, std::string>;

class SdRamFuncTest : public testing::Test {
 protected:
  [[nodiscard]] Decoded decode(unsigned int info_id) const {
    std::string text = "before";
    const Status status = decoder_.GetRamIndexInfo(0, info_id, text);
    return {status, text};
  }

  DeviceDouble device_;
  SdRamFunc decoder_{&DeviceDouble::get};
};

TEST_F(SdRamFuncTest, FormatsOneWord) {
  const struct {
    unsigned int info_id, selector, word;
    const char* text;
  } cases[] = {
      {sdram::kMemoryType, 0x01, 0, "Reserved"},       {sdram::kMemoryType, 0x01, 7, "DDR SDRAM"},
      {sdram::kMemoryType, 0x01, 13, "Unknown"},       {sdram::kMemoryType, 0x01, 17, "Unknown"},
      {sdram::kMemoryType, 0x01, 0xF12, "DDR5 SDRAM"}, {sdram::kMemoryType, 0x01, 19, "Unknown"},
      {sdram::kWeekYear, 0x08, 0x0005, "00-05"},       {sdram::kTemperature, 0x09, 27315, "0"},
      {sdram::kTemperature, 0x09, 0, "-273.15"},       {sdram::kVoltage, 0x06, 1050, "1.05"},
      {sdram::kRank, 0x05, 0xFFFFFFFF, "4294967295"},  {sdram::kVoltage, 0x06, 0, "0"}};
  for (const auto& c : cases) {
    device_.values = {{kSpd + c.selector, c.word}};
    EXPECT_EQ(decode(c.info_id), (Decoded{0, c.text})) << std::hex << c.info_id << ' ' << c.word;
  }
  double volts = 9;
  device_.values = {{kSpd + 0x06, 1350}};
  EXPECT_EQ(decoder_.getVoltage(0, volts), 0U);
  EXPECT_EQ(volts, 1.35);
}

// The last three: a hybrid module, DDR2, and DDR4 in the low byte only.
TEST_F(SdRamFuncTest, NamesModuleTypesByGeneration) {
  const struct {
    unsigned int memory_type, code;
    const char* text;
  } cases[] = {{11, 0, "Undefined"},    {11, 4, "Micro-DIMM"},   {11, 8, "72b-SO-UDIMM"},
               {11, 9, "72b-SO-RDIMM"}, {11, 11, "LRDIMM"},      {11, 12, "Unknown"},
               {12, 3, "SO-DIMM"},      {12, 4, "LRDIMM"},       {12, 7, "Reserved"},
               {12, 8, "72b-SO-RDIMM"}, {12, 9, "72b-SO-UDIMM"}, {12, 13, "32b-SO-DIMM"},
               {12, 15, "Reserved"},    {12, 16, "Unknown"},     {12, 0x102, "UDIMM"},
               {18, 5, "Undefined"},    {18, 7, "MRDIMM"},       {18, 9, "Undefined"},
               {18, 10, "DDIMM"},       {18, 11, "Solder down"}, {18, 12, "Reserved"},
               {18, 0x82, "Unknown"},   {8, 2, "N/A"},           {0x10C, 2, "N/A"}};
  for (const auto& c : cases) {
    device_.values = {{kSpd + 0x01, c.memory_type}, {kSpd + 0x02, c.code}};
    EXPECT_EQ(decode(sdram::kModuleType), (Decoded{0, c.text})) << c.memory_type << ' ' << c.code;
  }
  device_.values = {{kSpd + 0x01, 18}};
  device_.read_status = {{kSpd + 0x02, IOT_STATUS_READ_FAILED}};
  EXPECT_EQ(decode(sdram::kModuleType), (Decoded{IOT_STATUS_READ_FAILED, "N/A"}));
}

TEST_F(SdRamFuncTest, ReportsFailingAndHalfFailingReads) {
  const struct {
    unsigned int info_id, failing_selector;
    std::optional<std::uint32_t> stored;
    Decoded expected;
  } cases[] = {
      {sdram::kModuleType, 0x01, 12, {kOwnCode, "N/A"}},
      {sdram::kModuleType, 0x02, 3, {kOwnCode, "Undefined"}},
      {sdram::kPartNumber, 0x11, 0x41414141, {kOwnCode, "N/A"}},
      {sdram::kPartNumber, 0x12, {}, {0, "VLX-VLX--AGN3O5IJ-C2"}},
      {sdram::kPartNumber, 0x12, 0x5A5A5A5A, {0, "VLX-ZZZZ-AGN3O5IJ-C2"}},
      {sdram::kPartNumber, 0x15, {}, {0, "VLX-M4S0-AGN3O5I3O5I"}},
      {sdram::kSpecificData, 0x11, {}, {kOwnCode, "N/A"}},
      {sdram::kSpecificData, 0x21, 0x41414141, {kOwnCode, "N/A"}},
      {sdram::kSpecificData, 0x22, {}, {0, "factfact0042 / line 7 / shift B "}},
      {sdram::kSpecificData, 0x28, {}, {0, "factory 0042 / line 7 / shifshif"}},
      {sdram::kWriteProtection, 0x11, {}, {kOwnCode, "N/A"}},
      {sdram::kWriteProtection, 0x0A, 0x5750, {kOwnCode, "N/A"}},
  };
  load_reference_machine(&device_);
  for (const auto& c : cases) {
    device_.read_status = {{kSpd + c.failing_selector, kOwnCode}};
    device_.stored_on_failure = {{c.stored ? kSpd + c.failing_selector : 0, c.stored.value_or(0)}};
    EXPECT_EQ(decode(c.info_id), c.expected) << std::hex << c.info_id << ' ' << c.failing_selector;
  }
}

TEST_F(SdRamFuncTest, KeepsSeriesDataToItsOwnSeries) {
  device_.values[kSpd + 0x11] = 0x564C582B;  // "VLX+"
  EXPECT_EQ(decode(sdram::kSpecificData), (Decoded{IOT_STATUS_UNSUPPORTED, "N/A"}));
  EXPECT_EQ(decode(sdram::kWriteProtection), (Decoded{IOT_STATUS_UNSUPPORTED, "N/A"}));
  EXPECT_EQ(device_.calls.size(), 2U);

  device_.values[kSpd + 0x11] = 0x564C582D;  // "VLX-"
  const std::pair<std::uint32_t, const char*> states[] = {
      {0, "Disable"}, {0xFFFF0000, "Disable"}, {0x5750, "Enable"}, {0x15750, "Enable"}, {1, "N/A"}};
  for (const auto& [word, text] : states) {
    device_.values[kSpd + 0x0A] = word;
    EXPECT_EQ(decode(sdram::kWriteProtection), (Decoded{0, text})) << std::hex << word;
  }
}

TEST_F(SdRamFuncTest, RefusesUndefinedFieldsAndAMissingReadEntry) {
  EXPECT_EQ(decode(0x14180D00), (Decoded{IOT_STATUS_UNDEFINED_ITEM, "N/A"}));
  EXPECT_EQ(decode(0x14180101), (Decoded{IOT_STATUS_UNDEFINED_ITEM, "N/A"}));
  const SdRamFunc without_entry(nullptr);
  EXPECT_FALSE(without_entry.IsAvailable());
  std::string text;
  EXPECT_EQ(without_entry.getSpecificData(0, text), IOT_STATUS_NOT_READY);
  EXPECT_TRUE(device_.calls.empty());
}

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
