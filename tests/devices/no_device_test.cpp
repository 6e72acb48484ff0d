// The families before there is a device library: nothing is read or written, and nothing changes.
#include <gtest/gtest.h>

#include "devices/addon_board/device_trk7000.h"
#include "devices/gsensor/device_gsensor.h"
#include "devices/pic/device_pic.h"
#include "devices/poe/device_poe.h"
#include "framework/json_owner.h"

namespace {

template <typename Device>
void expect_nothing_read(unsigned int id) {
  SCOPED_TRACE(Device::NAME_DEVICE);
  EXPECT_FALSE(Device::is_available());
  unsigned int raw = 7;
  EXPECT_EQ(Device::get_value_by_id(id, &raw), IOT_STATUS_NOT_READY);
  EXPECT_EQ(raw, 7U);
  const JsonOwner value(json_integer(7));
  EXPECT_EQ(Device::get_value_by_id(id, value.get()), IOT_STATUS_NOT_READY);
  EXPECT_EQ(json_integer_value(value.get()), 7);
  RawMap words{{id, 7}};
  Device::get_raw_values(id, id + 1, &words);
  EXPECT_EQ(words, (RawMap{{id, 7}}));
}

TEST(NoDevice, NothingIsReadOrWritten) {
  expect_nothing_read<Device_PIC>(0x14160711);
  expect_nothing_read<Device_GSensor>(0x14150711);
  expect_nothing_read<Device_TRK7000>(0x14170311);
  StringMap texts{{1, "kept"}};
  EXPECT_EQ(Device_PIC::get_info_to_map(&texts), IOT_STATUS_NOT_READY);
  EXPECT_EQ(Device_TRK7000::get_info_to_map(&texts), IOT_STATUS_NOT_READY);
  EXPECT_EQ(texts, (StringMap{{1, "kept"}}));
  const JsonOwner value(json_integer(7));
  EXPECT_EQ(Device_PIC::set_value_by_id(0x14160711, value.get()), IOT_STATUS_NOT_READY);
  EXPECT_EQ(Device_GSensor::set_value_by_id(0x14150711, value.get()), IOT_STATUS_NOT_READY);
}

TEST(NoDevice, ThePortsHaveNoCodesToRead) {
  unsigned int raw = 7;
  EXPECT_EQ(Device_PoE::get_value_by_id(0x14140B01, &raw), IOT_STATUS_UNSUPPORTED);
  EXPECT_EQ(Device_PoE::set_value_by_id(0x14140B01, 1U), IOT_STATUS_UNSUPPORTED);
  EXPECT_EQ(raw, 7U);
  EXPECT_FALSE(Device_PoE::is_available());
  const JsonOwner value(json_integer(7));
  EXPECT_EQ(Device_PoE::get_value_by_id(0x14140B01, value.get()), IOT_STATUS_NOT_READY);
  EXPECT_EQ(Device_PoE::set_value_by_id(0x14140B01, value.get()), IOT_STATUS_NOT_READY);
  EXPECT_EQ(Device_PoE().port_count(), 0);
}

}  // namespace
