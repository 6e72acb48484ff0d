// The add-on board: the order of its reads.
#include "devices/addon_board/device_trk7000.h"

#include <gtest/gtest.h>

#include "tests/support/device_double.h"

namespace {

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
