// The smart battery: registers decoded and published, idle, failing and half-failing.
#include <gtest/gtest.h>

#include "devices/sbattery/device_sbattery.h"
#include "devices/sbattery/sbattery_func.h"
#include "devices/sbattery/sbattery_items.h"
#include "tests/support/comma_locale.h"
#include "tests/support/reference_machine.h"
#include "tests/support/single_reads.h"

namespace {

constexpr std::uint32_t kBase = 0x00B00000;
constexpr std::uint32_t kOwnCode = 0x77;

class BatteryTest : public testing::Test {
 protected:
  BatteryTest() { load_reference_machine(&device_); }

  DeviceDouble device_;
  Device_SBATTERY adapter_;
};

TEST_F(BatteryTest, ReadsTheFieldsInOrder) {
  EXPECT_EQ(adapter_.get_info_map().size(), 18U);
  std::vector<std::uint32_t> expected = {0x0A, 0x16, 0x24, 0x25, 0x26, 0x27, 0x28, 0x1B, 0x1C,
                                         0x19, 0x18, 0x09, 0x0A, 0x0D, 0x0E, 0x4F, 0x10, 0x0F,
                                         0x0A, 0x12, 0x0A, 0x13, 0x17, 0x08, 0x16};
  for (std::uint32_t& code : expected) {
    code += kBase;
  }
  EXPECT_EQ(device_.codes_read(), expected);
}

TEST_F(BatteryTest, SingleReadsAgreeWithTheDocumentUnderAnyLocale) {
  const CommaLocale locale;
  expect_single_reads(adapter_, "SMART BATTERY", 18 - 1);  // no time to full while discharging
  const JsonOwner value(json_string("?"));
  EXPECT_EQ(adapter_.get_value_by_id(0x14191201, value.get()), IOT_STATUS_SUCCESS);
  EXPECT_STREQ(json_string_value(value.get()), "0x7");
}

// What one changed or failing register makes of a field.
TEST_F(BatteryTest, DecodesUnusualRegisters) {
  const struct {
    unsigned int id, command, word;
    Status read_status;  // other than 0: the read fails, having stored the word
    Status status;
    std::string text;
  } cases[] = {
      {sbattery::kBatteryStatus, 0x0A, 0x10000, 0, 0, "AC Power"},
      {sbattery::kBatteryStatus, 0x0A, 0, kOwnCode, kOwnCode, "N/A"},
      {sbattery::kBatteryStatus, 0x16, 0xFF8F, 0, 0, "Charging"},
      {sbattery::kAverageTimeToEmpty, 0x0A, 0x10000, 0, 0, "2 h 5 m"},
      {sbattery::kAverageTimeToFull, 0x13, 59, 0, 0, "0 h 59 m"},
      {sbattery::kAverageTimeToFull, 0x0A, 0, 0, IOT_STATUS_NOT_FOUND, "N/A"},
      {sbattery::kAverageTimeToEmpty, 0x0A, 0, kOwnCode, 0, "2 h 5 m"},
      {sbattery::kAverageTimeToEmpty, 0x12, 65535, 0, IOT_STATUS_NOT_FOUND, "N/A"},
      {sbattery::kAverageTimeToEmpty, 0x12, 5, kOwnCode, kOwnCode, "N/A"},
      {sbattery::kCurrent, 0x0A, 0xABCD8000, 0, 0, "-32768"},
      {sbattery::kErrorCodes, 0x16, 0xFFFFFFFF, 0, 0, "0xf"},
      {sbattery::kSerialNumber, 0x1C, 0x12, 0, 0, "0x0012"},
      {sbattery::kManufacturerDate, 0x1B, 0xFFFF, 0, 0, "2107/15/31"},
      {sbattery::kTemperature, 0x08, 0, 0, 0, "-273.15"},
      {sbattery::kManufacturerName, 0x25, 0x5F5F5F5F, kOwnCode, 0, "Kest____Power Cells "},
      {sbattery::kManufacturerName, 0x28, 0x5F5F5F5F, kOwnCode, kOwnCode, "Kestrel Power Ce____"},
      {0x14191300, 0x16, 0, 0, 0, "N/A"},  // no such field
      {0x14190101, 0x16, 0, 0, 0, "N/A"},  // bits 7..0 are the adapter's to clear
  };
  const SBatteryFunc decoder(&DeviceDouble::get);
  const auto healthy = device_.values;
  for (const auto& c : cases) {
    device_.values = healthy;
    device_.values[kBase + c.command] = c.word;
    device_.stored_on_failure = device_.values;
    device_.read_status = {{c.read_status != 0 ? kBase + c.command : 0, c.read_status}};
    std::string text = "before";
    EXPECT_EQ(decoder.GetBatteryInfo(c.id, text), c.status) << std::hex << c.id << ' ' << c.word;
    EXPECT_EQ(text, c.text) << std::hex << c.id << ' ' << c.word;
  }

  device_.stored_on_failure.clear();
  device_.read_status = {{kBase + 0x24, 1}, {kBase + 0x26, 1}};
  std::string name;
  EXPECT_EQ(decoder.getManufacturerName(name), IOT_STATUS_SUCCESS);
  EXPECT_EQ(name, std::string("\0\0\0\0rel rel r Cells ", 20));
}

TEST_F(BatteryTest, ReportsOnlyTheLastFieldOfAFullRead) {
  device_.read_status = {{kBase + 0x09, kOwnCode}};
  EXPECT_EQ(adapter_.update_info(), IOT_STATUS_SUCCESS);
  device_.read_status = {{kBase + 0x16, kOwnCode}};
  EXPECT_EQ(adapter_.update_info(), kOwnCode);
}

TEST_F(BatteryTest, IsPresentWhenTheProbeIsAnswered) {
  EXPECT_TRUE(adapter_.is_available());
  EXPECT_EQ(adapter_.get_value_by_id(0x14180101, nullptr), IOT_STATUS_READ_FAILED);
  device_.read_status = {{kBase, 9}};
  device_.stored_on_failure = {{kBase, 1}};
  EXPECT_FALSE(adapter_.is_available());
  EXPECT_EQ(adapter_.get_value_by_id(0x14180101, nullptr), IOT_STATUS_NOT_READY);
  Device_SBATTERY::get_func = nullptr;
  EXPECT_FALSE(Device_SBATTERY().is_available());
}

TEST_F(BatteryTest, ASecondAdapterKeepsTheCatalogue) {
  Device_SBATTERY::bound_map[sbattery::kVoltage][MAX] = 20000;
  const Device_SBATTERY second;
  EXPECT_EQ(Device_SBATTERY::get_range_by_id(sbattery::kVoltage).at(MAX), 20000);
  Device_SBATTERY::bound_map[sbattery::kVoltage][MAX] = 65535;
}

}  // namespace
