// The PoE ports: computed codes and texts, the port count, and their refresh.
#include "devices/poe/device_poe.h"

#include <gtest/gtest.h>

#include "tests/support/device_double.h"

namespace {

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
      {0xFFFF0001, 0xFFFFFFFF, "", "", "", -1},
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
