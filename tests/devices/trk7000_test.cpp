// The add-on board: conversions and single reads.
#include "devices/addon_board/device_trk7000.h"

#include <gtest/gtest.h>

#include "framework/json_owner.h"
#include "tests/support/device_double.h"

namespace {

TEST(DeviceTRK7000, TenthsOfAKelvinToWholeDegrees) {
  const struct {
    unsigned int decikelvin;
    int celsius;
  } cases[] = {{3231, 50},  {3226, 49}, {2725, 0},
               {2727, 0},   {2736, 0},  {2737, 1},
               {2626, -10}, {0, -272},  {0xFFFFFFFF, 429496456}};
  for (const auto& [decikelvin, celsius] : cases) {
    EXPECT_EQ(decikelvin_to_celsius(decikelvin), celsius) << decikelvin;
  }
}

TEST(DeviceTRK7000, VersionTexts) {
  DeviceDouble device;
  device.values = {{0x800000, 1}, {0x800001, 0xAA560102}, {0x800002, 0x00430F10}, {0x800003, 0}};
  StringMap out;
  EXPECT_EQ(Device_TRK7000::get_info_to_map(&out), IOT_STATUS_SUCCESS);
  EXPECT_EQ(out, (StringMap{{0x14170601, "V1.2"},
                            {0x14170602, "Cf.16"},
                            {0x14170603, std::string("\0000.0", 4)}}));
  // The published text ends at the first NUL; a lone high byte is no UTF-8 and sets nothing.
  const JsonOwner value(json_string("before"));
  device.values[0x800001] = 0x00FF0102;
  EXPECT_EQ(Device_TRK7000::get_value_by_id(0x14170601, value.get()), IOT_STATUS_SUCCESS);
  EXPECT_STREQ(json_string_value(value.get()), "before");
  EXPECT_EQ(Device_TRK7000::get_value_by_id(0x14170603, value.get()), IOT_STATUS_SUCCESS);
  EXPECT_STREQ(json_string_value(value.get()), "");
}

TEST(DeviceTRK7000, SingleReads) {
  DeviceDouble device;
  device.values = {{0x800000, 1}, {0x820003, 3231}, {0x822009, 0xFFFFFFFF},
                   {0x800001, 1}, {0x800002, 1},    {0x800003, 1}};
  device.read_status[0x822003] = 0x31;
  const JsonOwner value(json_integer(-5));
  const struct {
    unsigned int id;
    Status status;
    json_int_t value;
  } cases[] = {
      {0x14170121, 0, 50},
      {0x14170317, 0, 0xFFFFFFFF},
      {0x14170311, IOT_STATUS_READ_FAILED, 0xFFFFFFFF},
      {0x14170500, IOT_STATUS_UNSUPPORTED, 0xFFFFFFFF},
      {0x14170604, IOT_STATUS_NOT_FOUND, 0xFFFFFFFF},
  };
  for (const auto& [id, status, expected] : cases) {
    EXPECT_EQ(Device_TRK7000::get_value_by_id(id, value.get()), status) << std::hex << id;
    EXPECT_EQ(json_integer_value(value.get()), expected) << std::hex << id;
  }
  device.values[0x800000] = 0;
  EXPECT_EQ(Device_TRK7000::get_value_by_id(0x14170121, value.get()), IOT_STATUS_NOT_READY);
}

TEST(DeviceTRK7000, TemperaturesAskForPresenceBeforeEachBankOfSensors) {
  DeviceDouble device;
  device.values = {{0x800000, 1}, {0x820000, 1}, {0x820002, 3}, {0x820003, 4},
                   {0x820004, 5}, {0x820005, 6}, {0x820006, 7}};
  device.read_status[0x820001] = 1;
  Device_TRK7000 board;
  EXPECT_EQ(board.get_temps(), (RawMap{{0x14170111, 1},
                                       {0x14170113, 3},
                                       {0x14170121, 4},
                                       {0x14170122, 5},
                                       {0x14170123, 6},
                                       {0x14170124, 7}}));
  EXPECT_EQ(device.codes_read(),
            (std::vector<std::uint32_t>{0x800000, 0x820000, 0x820001, 0x820002, 0x800000, 0x820003,
                                        0x820004, 0x820005, 0x820006}));
}

}  // namespace
