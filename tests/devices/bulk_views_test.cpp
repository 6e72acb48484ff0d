// What the adapters hand to the document: all that can be read, and nothing of an earlier read.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "devices/addon_board/device_trk7000.h"
#include "devices/gsensor/device_gsensor.h"
#include "devices/pic/device_pic.h"
#include "tests/support/reference_machine.h"

namespace {

// The number of items of each view.
std::vector<std::size_t> sizes(Device_TRK7000& board) {
  return {board.get_info_map().size(), board.get_ob_fans().size(), board.get_temps().size()};
}

std::vector<std::size_t> sizes(Device_PIC& controller) {
  return {controller.get_info_map().size(), controller.get_defaults_map().size(),
          controller.get_settings_map().size(), controller.get_status_map().size()};
}

std::vector<std::size_t> sizes(Device_GSensor& sensor) {
  return {sensor.get_data_map().size(), sensor.get_settings_map().size()};
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
  EXPECT_EQ(std::ranges::count(whole, 0U), 0);
  for (const bool is_present : {true, false}) {
    for (const auto& [code, word] : device.values) {
      device.read_status[code] = 5;
    }
    if (is_present) {
      device.read_status.erase(TypeParam::sheet().presence_code);
    }
    EXPECT_EQ(sizes(adapter), std::vector<std::size_t>(whole.size())) << is_present;
    device.read_status.clear();
    EXPECT_EQ(sizes(adapter), whole);
  }
}

}  // namespace
