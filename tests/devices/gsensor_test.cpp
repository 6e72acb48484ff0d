// The accelerometer: its reads with their odd status, and its writes.
#include "devices/gsensor/device_gsensor.h"

#include <gtest/gtest.h>

#include "framework/json_owner.h"
#include "tests/support/device_double.h"

namespace {

using Call = DeviceDouble::Call;

JsonOwner integer(json_int_t value) {
  return JsonOwner(json_integer(value));
}
JsonOwner real(double value) {
  return JsonOwner(json_real(value));
}

TEST(DeviceGSensor, AScalarIsFilledAndTheStatusStillSaysFailed) {
  DeviceDouble device;
  device.values = {{0x400000, 1},    {0x410000, 0xFFFFFC18}, {0x430000, 0x100},
                   {0x420001, 2500}, {0x450000, 0xFFFFFFFF}, {0, 3}};
  device.read_status[0x430001] = 0x44;
  const struct {
    unsigned int id;
    JsonOwner value, expected;
    const char* reason;
  } cases[] = {
      {0x14150901, real(9), real(-1000 * 0.0001), "a reading, signed"},
      {0x14150722, real(9), real(0.25), "an offset"},
      {0x14150711, integer(9), integer(1), "a switch: any word but 0 is on"},
      {0x14150731, integer(9), integer(0xFFFFFFFF), "a code: the whole word, unsigned"},
      {0x14150741, integer(9), integer(9), "unreadable"},
      {0x14150700, integer(9), integer(9), "no kind"},
      {0x14150001, integer(9), integer(9), "presence"},
  };
  for (const auto& [id, value, expected, reason] : cases) {
    EXPECT_EQ(Device_GSensor::get_value_by_id(id, value.get()), IOT_STATUS_READ_FAILED) << reason;
    EXPECT_TRUE(json_equal(value.get(), expected.get())) << reason;
  }
  EXPECT_EQ(Device_GSensor::kova_id_map.erase(0x14150700), 1U);
  const JsonOwner object(json_pack("{s:i}", "kept", 1));
  EXPECT_EQ(Device_GSensor::get_value_by_id(0x14150901, object.get()), IOT_STATUS_SUCCESS);
  EXPECT_EQ(json_object_size(object.get()), 1U);
  device.values[0x400000] = 0;
  EXPECT_EQ(Device_GSensor::get_value_by_id(0x14150901, object.get()), IOT_STATUS_NOT_READY);
}

TEST(DeviceGSensor, Writes) {
  const struct {
    unsigned int id;
    JsonOwner value;
    std::uint32_t code, word;
  } accepted[] = {
      {0x14150722, real(0.25), 0x420001, 2500},
      {0x14150722, integer(1), 0x420001, 10000},
      {0x14150722, real(-0.00015), 0x420001, 0xFFFFFFFF},
      {0x14150711, integer(5), 0x430000, 1},
      {0x14150711, integer(-3), 0x430000, 0},
      {0x14150711, real(1), 0x430000, 0},
      {0x14150741, integer(32), 0x430001, 32},
      {0x14150732, real(4), 0x450001, 0},
      {0x14150714, integer(1), 0, 1},
      {0x14150751, integer(7), 0, 0},
  };
  for (const auto& [id, value, code, word] : accepted) {
    DeviceDouble device;  // presence is not asked
    device.write_status[code] = 0;
    EXPECT_EQ(Device_GSensor::set_value_by_id(id, value.get()), IOT_STATUS_SUCCESS);
    EXPECT_EQ(device.calls, (std::vector<Call>{{Call::kWrite, code, word}})) << std::hex << id;
  }
  EXPECT_EQ(Device_GSensor::kova_id_map.erase(0x14150714), 1U);
  EXPECT_EQ(Device_GSensor::kova_id_map.erase(0x14150751), 1U);

  const struct {
    unsigned int id;
    JsonOwner value;
    Status status;
  } refused[] = {
      {0x14150711, nullptr, IOT_STATUS_INVALID_PARAMETER},
      {0x14150711, JsonOwner(json_true()), IOT_STATUS_INVALID_PARAMETER},
      {0x14150901, integer(1), IOT_STATUS_UNSUPPORTED},
      {0x14150001, integer(1), IOT_STATUS_UNSUPPORTED},
  };
  DeviceDouble device;
  for (const auto& [id, value, status] : refused) {
    EXPECT_EQ(Device_GSensor::set_value_by_id(id, value.get()), status) << std::hex << id;
  }
  EXPECT_TRUE(device.calls.empty());
  device.write_status[0x430001] = 0x42;
  EXPECT_EQ(Device_GSensor::set_value_by_id(0x14150741, integer(2).get()), IOT_STATUS_WRITE_FAILED);
  Device_GSensor::set_func = nullptr;
  EXPECT_EQ(Device_GSensor::set_value_by_id(0x14150741, nullptr), IOT_STATUS_NOT_READY);
}

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
