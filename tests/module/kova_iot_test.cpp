// The entry points and the manager behind them: life cycle, and families probed in order.
#include "include/kova_iot.h"

#include <gtest/gtest.h>

#include "framework/json_owner.h"
#include "tests/support/reference_machine.h"
#include "tests/support/wrapped_loader.h"

namespace {

class KovaIoT : public testing::Test {
 protected:
  KovaIoT() {
    wrapped_loader::install_device_library();
    load_reference_machine(&device);
  }
  void TearDown() override { KovaIoTUninitialize(); }

  DeviceDouble device;
};

TEST_F(KovaIoT, WithoutAManagerEveryCallAnswers) {
  const auto expect_not_ready = [] {
    const JsonOwner target(json_object());
    const JsonOwner value(json_integer(1));
    EXPECT_EQ(KovaIoTGetMDCapability(target.get()), IOT_STATUS_NOT_READY);
    EXPECT_EQ(KovaIoTGetMDCapability(nullptr), IOT_STATUS_NOT_READY);
    EXPECT_EQ(KovaIoTGetMDValue(0x14140B01, value.get()), IOT_STATUS_NOT_READY);
    EXPECT_EQ(KovaIoTGetMDValue(0x14140B01, nullptr), IOT_STATUS_NOT_READY);
    EXPECT_EQ(KovaIoTSetMDValue(0x14140B01, value.get()), IOT_STATUS_NOT_READY);
    EXPECT_EQ(KovaIoTSetMDEventHandler(nullptr), IOT_STATUS_SUCCESS);
    EXPECT_EQ(KovaIoTGetModuleID(), 20U);
    EXPECT_EQ(KovaIoTUninitialize(), IOT_STATUS_SUCCESS);
  };
  expect_not_ready();
  ASSERT_EQ(KovaIoTInitialize(), IOT_STATUS_SUCCESS);
  EXPECT_EQ(KovaIoTGetModuleID(), 20U);
  EXPECT_EQ(KovaIoTSetMDEventHandler([] {}), IOT_STATUS_SUCCESS);
  EXPECT_EQ(KovaIoTUninitialize(), IOT_STATUS_SUCCESS);
  expect_not_ready();
  wrapped_loader::state() = {};
  EXPECT_EQ(KovaIoTInitialize(), IOT_STATUS_NOT_FOUND);
  expect_not_ready();
}

TEST_F(KovaIoT, AFailedStartReplacesTheRunningManagerToo) {
  ASSERT_EQ(KovaIoTInitialize(), IOT_STATUS_SUCCESS);
  ASSERT_EQ(KovaIoTInitialize(), IOT_STATUS_SUCCESS);
  wrapped_loader::state() = {};
  EXPECT_EQ(KovaIoTInitialize(), IOT_STATUS_NOT_FOUND);
  const JsonOwner value(json_integer(1));
  EXPECT_EQ(KovaIoTGetMDValue(0x14140B01, value.get()), IOT_STATUS_NOT_READY);
}

TEST_F(KovaIoT, WithoutAReadEntryNoFamilyIsPresent) {
  wrapped_loader::state().has_read_entry = false;
  EXPECT_EQ(KovaIoTInitialize(), IOT_STATUS_NOT_FOUND);
}

TEST_F(KovaIoT, WithoutAWriteEntryReadsWorkAndWritesDoNot) {
  wrapped_loader::state().has_write_entry = false;
  ASSERT_EQ(KovaIoTInitialize(), IOT_STATUS_SUCCESS);
  const JsonOwner value(json_integer(-1));
  EXPECT_EQ(KovaIoTGetMDValue(0x14140B01, value.get()), IOT_STATUS_SUCCESS);
  EXPECT_EQ(json_integer_value(value.get()), 1);
  EXPECT_EQ(KovaIoTSetMDValue(0x14140B01, value.get()), IOT_STATUS_NOT_READY);
  EXPECT_EQ(KovaIoTSetMDValue(0x14140B01, nullptr), IOT_STATUS_NOT_READY);
}

TEST_F(KovaIoT, FamiliesAreProbedInOrderUntilOneAnswers) {
  // Codes of the presence reads: memory, board, battery, PoE, controller, accelerometer.
  const std::uint32_t probes[] = {0xA00000, 0x800000, 0xB00000, 0x200000, 0x600008, 0x400000};
  for (std::size_t present = 0; present <= std::size(probes); ++present) {
    device.calls.clear();
    device.values.clear();
    device.lenient = true;  // the one family that is present has nothing else to tell
    if (present < std::size(probes)) {
      device.values[probes[present]] = 1;
    }
    EXPECT_EQ(KovaIoTInitialize(),
              present < std::size(probes) ? IOT_STATUS_SUCCESS : IOT_STATUS_NOT_FOUND);
    std::vector<std::uint32_t> codes = device.codes_read();
    // Construction reads the two port probes, then 22 ends of the controller's ranges.
    const std::size_t probed = std::min(present + 1, std::size(probes));
    ASSERT_GE(codes.size(), 24 + probed);
    EXPECT_EQ(codes[0], 0x260007U);
    EXPECT_EQ(codes[1], 0x260003U);
    EXPECT_EQ(codes[2], 0x6B0000U);
    EXPECT_EQ(std::vector(codes.begin() + 24, codes.begin() + 24 + static_cast<long>(probed)),
              std::vector(probes, probes + probed));
  }
}

}  // namespace
