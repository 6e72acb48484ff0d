// The PoE ports: computed codes and texts, the port count, reads and writes.
#include "devices/poe/device_poe.h"

#include <gtest/gtest.h>

#include "framework/json_owner.h"
#include "tests/support/device_double.h"

namespace {

using Call = DeviceDouble::Call;

TEST(DevicePoE, CodesNamesUnitsAndRangesFollowFromTheId) {
  const struct {
    unsigned int id, code;
    const char *name, *unit, *options;
    double max;  // -1: no range
  } cases[] = {
      {0x14140001, 0x200000, "Available", "", "", -1},
      {0x14140801, 0x220000, "PoE 1 detect", "", "", 7},
      {0x14140908, 0x230007, "PoE 8 class", "", "", 7},
      {0x14140402, 0x240001, "PoE 2 current", "mA", "", 600},
      {0x14140203, 0x250002, "PoE 3 voltage", "V", "", 100},
      {0x14140A08, 0x260007, "", "", "", -1},
      {0x14140B04, 0x270003, "PoE 4 power", "", "0=Disable|1=Enable", 1},
      {0x14140200, 0x24FFFF, "PoE voltage", "", "", -1},
      {0x14140B00, 0x26FFFF, "PoE power", "", "", -1},
      {0x14140301, 0xFFFFFFFF, "", "", "", -1},
      {0x14150801, 0xFFFFFFFF, "", "", "", -1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << std::hex << c.id);
    EXPECT_EQ(Device_PoE::getKovaID(c.id), c.code);
    EXPECT_EQ(Device_PoE::get_name_by_id(c.id), c.name);
    EXPECT_EQ(Device_PoE::get_unit_by_id(c.id), c.unit);
    EXPECT_EQ(Device_PoE::get_desc_by_id(c.id), c.options);
    EXPECT_EQ(Device_PoE::get_range_by_id(c.id),
              c.max < 0 ? Range{} : (Range{{MIN, 0.0}, {MAX, c.max}}));
  }
}

TEST(DevicePoE, TheEighthPortIsAskedFirstAndOnlyOneCounts) {
  const struct {
    std::uint32_t eighth, fourth;
    int count;
    std::size_t reads;
  } cases[] = {{1, 1, 8, 1}, {2, 1, 4, 2}, {0, 1, 4, 2}, {0, 2, 0, 2}};
  for (const auto& [eighth, fourth, count, reads] : cases) {
    DeviceDouble device;
    device.values = {{0x260007, eighth}, {0x260003, fourth}};
    EXPECT_EQ(Device_PoE::getPortNumber(), count);
    EXPECT_EQ(device.calls.size(), reads);
  }
  DeviceDouble device;  // failing probes that store a 1 do not count
  device.read_status = {{0x260007, 5}, {0x260003, 5}};
  device.stored_on_failure = {{0x260007, 1}, {0x260003, 1}};
  EXPECT_EQ(Device_PoE::getPortNumber(), 0);
}

TEST(DevicePoE, PublishedReads) {
  DeviceDouble device;
  device.values = {{0x200000, 1}, {0x240000, 250}, {0x220000, 0x80000107}, {0x260003, 9}};
  device.read_status[0x250000] = 0x77;
  const JsonOwner real(json_real(-1));
  const JsonOwner integer(json_integer(-1));
  EXPECT_EQ(Device_PoE::get_value_by_id(0x14140401, real.get()), IOT_STATUS_SUCCESS);
  EXPECT_EQ(json_real_value(real.get()), 0.25);
  EXPECT_EQ(Device_PoE::get_value_by_id(0x14140801, integer.get()), IOT_STATUS_SUCCESS);
  EXPECT_EQ(json_integer_value(integer.get()), 0x80000107);  // the whole word, unsigned
  EXPECT_EQ(Device_PoE::get_value_by_id(0x14140801, real.get()), IOT_STATUS_SUCCESS);
  EXPECT_EQ(json_real_value(real.get()), 0.25);  // another type is left alone
  EXPECT_EQ(Device_PoE::get_value_by_id(0x14140801, static_cast<json_t*>(nullptr)),
            IOT_STATUS_SUCCESS);
  EXPECT_EQ(Device_PoE::get_value_by_id(0x14140201, real.get()), 0x77U);

  device.calls.clear();
  EXPECT_EQ(Device_PoE::get_value_by_id(0x14140A04, integer.get()), IOT_STATUS_UNSUPPORTED);
  EXPECT_EQ(Device_PoE::get_value_by_id(0x14140001, integer.get()), IOT_STATUS_UNSUPPORTED);
  EXPECT_EQ(Device_PoE::get_value_by_id(0x14140301, integer.get()), IOT_STATUS_UNSUPPORTED);
  EXPECT_EQ(device.codes_read(),
            (std::vector<std::uint32_t>{0x200000, 0x260003, 0x200000, 0x200000, 0x200000}));
  device.values[0x200000] = 0;
  EXPECT_EQ(Device_PoE::get_value_by_id(0x14140401, real.get()), IOT_STATUS_NOT_READY);
}

TEST(DevicePoE, Writes) {
  constexpr unsigned int kSwitch = 0x14140B02;
  const struct {
    unsigned int id;
    JsonOwner value;
    std::uint32_t state;
    Status status;
    std::vector<Call> expected;  // after the presence read
    const char* reason;
  } cases[] = {
      {kSwitch, JsonOwner(json_integer(5)), 1, 0, {{Call::kRead, 0x270001}}, "on already"},
      {kSwitch,
       JsonOwner(json_integer(5)),
       0,
       0,
       {{Call::kRead, 0x270001}, {Call::kWrite, 0x270001, 1}},
       "turned on"},
      {kSwitch,
       JsonOwner(json_integer(-3)),
       1,
       0,
       {{Call::kRead, 0x270001}, {Call::kWrite, 0x270001, 0}},
       "turned off"},
      {kSwitch,
       JsonOwner(json_integer(0x100000000)),
       0,
       0,
       {{Call::kRead, 0x270001}, {Call::kWrite, 0x270001, 1}},
       "judged on 64 bits"},
      {kSwitch,
       JsonOwner(json_integer(1)),
       2,
       0,
       {{Call::kRead, 0x270001}, {Call::kWrite, 0x270001, 1}},
       "an odd state is no 1"},
      {kSwitch, JsonOwner(json_real(1)), 0, IOT_STATUS_INVALID_PARAMETER, {}, "a real"},
      {kSwitch, nullptr, 0, IOT_STATUS_INVALID_PARAMETER, {}, "null"},
      {0x14140802, nullptr, 0, IOT_STATUS_UNSUPPORTED, {}, "no switch: asked before the type"},
  };
  for (const auto& [id, value, state, status, expected, reason] : cases) {
    SCOPED_TRACE(reason);
    DeviceDouble device;
    device.values = {{0x200000, 1}, {0x270001, state}};
    device.write_status[0x270001] = 0;
    EXPECT_EQ(Device_PoE::set_value_by_id(id, value.get()), status);
    ASSERT_FALSE(device.calls.empty());
    EXPECT_EQ(device.calls.front(), (Call{Call::kRead, 0x200000}));
    device.calls.erase(device.calls.begin());
    EXPECT_EQ(device.calls, expected);
  }
  DeviceDouble device;
  device.values = {{0x200000, 1}, {0x270001, 0}};
  device.write_status[0x270001] = 0x1234;
  const JsonOwner on(json_integer(1));
  EXPECT_EQ(Device_PoE::set_value_by_id(kSwitch, on.get()), 0x1234U);  // passed through
  device.read_status[0x270001] = 0x55;
  EXPECT_EQ(Device_PoE::set_value_by_id(kSwitch, on.get()), 0x55U);
  device.values[0x200000] = 0;
  EXPECT_EQ(Device_PoE::set_value_by_id(kSwitch, on.get()), IOT_STATUS_NOT_READY);
}

TEST(DevicePoE, APortThatStopsAnsweringKeepsItsLastValue) {
  DeviceDouble device;
  device.values = {{0x260007, 0}, {0x260003, 1}, {0x220000, 0x101}, {0x220001, 2}, {0x220003, 4}};
  device.read_status[0x220002] = 1;
  Device_PoE poe;
  const Device_PoE::ByteMap expected{{0x14140801, 1}, {0x14140802, 2}, {0x14140804, 4}};
  EXPECT_EQ(poe.get_poe_detects(), expected);
  device.read_status[0x220001] = 1;
  EXPECT_EQ(poe.get_poe_detects(), expected);
}

}  // namespace
