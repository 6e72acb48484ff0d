// What the adapters hand to the document: all that can be read, and nothing of an earlier read.
#include <gtest/gtest.h>

#include "devices/addon_board/device_trk7000.h"
#include "devices/gsensor/device_gsensor.h"
#include "devices/pic/device_pic.h"
#include "tests/support/reference_machine.h"

namespace {

// The number of items by heading.
template <typename Device>
std::map<unsigned int, std::size_t> sizes(Device& adapter) {
  std::map<unsigned int, std::size_t> found;
  adapter.visit_packages(
      [&](unsigned int heading, const auto& items) { found[heading] = items.size(); });
  return found;
}

template <typename Device>
class BulkViews : public testing::Test {};

using Devices = testing::Types<Device_TRK7000, Device_PIC, Device_GSensor>;
TYPED_TEST_SUITE(BulkViews, Devices);

TYPED_TEST(BulkViews, HoldWhatCanBeReadNow) {
  DeviceDouble device;
  load_reference_machine(&device);
  TypeParam adapter;
  const auto whole = sizes(adapter);
  for (const auto& [heading, size] : whole) {
    EXPECT_GT(size, 0U) << heading;
  }
  for (const bool is_present : {true, false}) {
    for (const auto& [code, word] : device.values) {
      device.read_status[code] = 5;
    }
    if (is_present) {
      device.read_status.erase(TypeParam::sheet().presence_code);
    }
    for (const auto& [heading, size] : sizes(adapter)) {
      EXPECT_EQ(size, 0U) << heading << (is_present ? "" : " of an absent family");
    }
    device.read_status.clear();
    EXPECT_EQ(sizes(adapter), whole);
  }
}

}  // namespace
