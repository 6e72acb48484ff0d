// The smart battery: the status of a full read, presence, and its catalogue.
#include <gtest/gtest.h>

#include "devices/sbattery/device_sbattery.h"
#include "devices/sbattery/sbattery_func.h"
#include "devices/sbattery/sbattery_items.h"
#include "tests/support/reference_machine.h"

namespace {

constexpr std::uint32_t kBase = 0x00B00000;
constexpr std::uint32_t kOwnCode = 0x77;

class BatteryTest : public testing::Test {
 protected:
  BatteryTest() { load_reference_machine(&device_); }

  DeviceDouble device_;
  Device_SBATTERY adapter_;
};

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

// Of -1 mA bit 6 is set, of -200 mA it is not.
TEST_F(BatteryTest, AStatusThatIsNotStoredIsTheCurrents) {
  static std::uint32_t current;
  const SBatteryFunc decoder([](std::uint32_t code, std::uint32_t* word) {
    *word = code == kBase + 0x0A ? current : *word;
    return IOT_STATUS_SUCCESS;
  });
  const std::pair<std::uint32_t, const char*> cases[] = {
      {0xFFFF, "Discharging"}, {0xFF38, "Charging"}, {0, "AC Power"}};
  for (const auto& [word, state] : cases) {
    current = word;
    std::string text;
    EXPECT_EQ(decoder.getBatteryStatus(text), IOT_STATUS_SUCCESS);
    EXPECT_EQ(text, state) << word;
  }
}

TEST_F(BatteryTest, ASecondAdapterKeepsTheCatalogue) {
  Device_SBATTERY::bound_map[sbattery::kVoltage][MAX] = 20000;
  const Device_SBATTERY second;
  EXPECT_EQ(Device_SBATTERY::get_range_by_id(sbattery::kVoltage).at(MAX), 20000);
  Device_SBATTERY::bound_map[sbattery::kVoltage][MAX] = 65535;
}

}  // namespace
