// The accelerometer: the order of its reads.
#include "devices/gsensor/device_gsensor.h"

#include <gtest/gtest.h>

#include "tests/support/device_double.h"

namespace {

TEST(DeviceGSensor, SettingsAreReadBlockByBlock) {
  DeviceDouble device;
  device.values = {{0x400000, 1}, {0x430000, 1}, {0x440000, 2}, {0x440001, 3}, {0x420000, 4},
                   {0x420001, 5}, {0x420002, 6}, {0x450000, 7}, {0x450001, 8}, {0x430001, 9}};
  Device_GSensor gsensor;
  EXPECT_EQ(gsensor.get_settings_map().size(), 9U);
  EXPECT_EQ(device.codes_read(),
            (std::vector<std::uint32_t>{0x400000, 0x430000, 0x440000, 0x440001, 0x400000, 0x420000,
                                        0x420001, 0x420002, 0x400000, 0x450000, 0x450001, 0x400000,
                                        0x430001}));
  device.values[0x400000] = 0;
  EXPECT_TRUE(gsensor.get_settings_map().empty());
  EXPECT_TRUE(gsensor.get_data_map().empty());
}

}  // namespace
