// The power and ignition controller: its catalogue and the ranges that the device reports.
#include "devices/pic/device_pic.h"

#include <gtest/gtest.h>

#include "tests/support/device_double.h"

namespace {

TEST(DevicePIC, AWriteTargetHasARangeAndACodeButNeitherNameNorUnit) {
  EXPECT_EQ(Device_PIC::get_name_by_id(0x14160731), "");
  EXPECT_EQ(Device_PIC::get_unit_by_id(0x14160731), "");
  EXPECT_EQ(Device_PIC::init_bound_map().at(0x14160731), (Range{{MIN, 7.0}, {MAX, 65535.0}}));
  EXPECT_EQ(Device_PIC::init_kova_id_map().at(0x1416073B), 0x68000AU);
}

TEST(DevicePIC, VoltageItemsAreTheThresholdsInAllViewsAndThePowerInput) {
  for (const unsigned int id : {0x14160716U, 0x14160727U, 0x14160736U, 0x14160746U, 0x14160757U,
                                0x141607F6U, 0x14160803U}) {
    EXPECT_TRUE(Device_PIC::is_transfer_volt(id)) << std::hex << id;
  }
  for (const unsigned int id : {0x14160715U, 0x14160806U, 0x14160606U, 0x14150716U}) {
    EXPECT_FALSE(Device_PIC::is_transfer_volt(id)) << std::hex << id;
  }
  using catalogue::Kind;
  EXPECT_TRUE(pic::is_in_tenths_of_a_volt(
      {.id = 1, .unit = "V", .as = {.kind = Kind::kReal, .divisor = 10}}));
  for (const catalogue::Row& other :
       {catalogue::Row{.id = 1, .unit = "A", .as = {.kind = Kind::kReal, .scale = 0.1}},
        {.id = 1, .unit = "V", .as = {.kind = Kind::kReal, .scale = 0.001}},
        {.id = 1, .unit = "V", .as = {.kind = Kind::kReal, .scale = 0.1, .offset = 1}},
        {.id = 1, .unit = "V", .as = {.kind = Kind::kInteger}}}) {
    EXPECT_FALSE(pic::is_in_tenths_of_a_volt(other)) << other.unit << other.as.scale;
  }
}

TEST(DevicePIC, RangesBecomeTheDevicesOwnWhereItReportsBothEnds) {
  Device_PIC::bound_map = Device_PIC::init_bound_map();
  {
    DeviceDouble device;
    for (std::uint32_t n = 0; n < 11; ++n) {
      device.values[0x6B0000 + n] = 95 + n;
      device.values[0x6C0000 + n] = 115 + n;
    }
    device.read_status[0x6B0000] = 1;
    device.read_status[0x6C0001] = 1;
    const Device_PIC pic;
    EXPECT_EQ(device.calls.size(), 22U);  // a failing minimum does not spare the maximum
    EXPECT_EQ(device.calls[0].code, 0x6B0000U);
    EXPECT_EQ(device.calls[1].code, 0x6C0000U);
  }
  const struct {
    unsigned int number;
    Range range;
  } cases[] = {
      {1, {{MIN, 7.0}, {MAX, 65535.0}}},
      {2, {{MIN, 1.0}, {MAX, 65535.0}}},
      {3, {{MIN, 97.0}, {MAX, 117.0}}},
      {6, {{MIN, 100 * 0.1}, {MAX, 120 * 0.1}}},
  };
  for (const auto& [number, range] : cases) {
    for (const unsigned int view : {0x14160710U, 0x14160720U, 0x14160730U}) {
      EXPECT_EQ(Device_PIC::get_range_by_id(view + number), range) << std::hex << view + number;
    }
  }
  Device_PIC::bound_map = Device_PIC::init_bound_map();
}

}  // namespace
