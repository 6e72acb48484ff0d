// The entry points and the manager behind them: life cycle, and families probed in order.
#include "include/kova_iot.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "framework/json_owner.h"
#include "module/families.h"
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
  std::vector<std::uint32_t> probes;
  families::visit_by(families::kProbe, [&](const auto& family) {
    probes.push_back(std::decay_t<decltype(family)>::Adapter::sheet().presence_code);
  });
  for (std::size_t present = 0; present <= probes.size(); ++present) {
    device.calls.clear();
    device.values.clear();
    device.lenient = true;  // the one family that is present has nothing else to tell
    if (present < probes.size()) {
      device.values[probes[present]] = 1;
    }
    EXPECT_EQ(KovaIoTInitialize(),
              present < probes.size() ? IOT_STATUS_SUCCESS : IOT_STATUS_NOT_FOUND);
    std::vector<std::uint32_t> codes = device.codes_read();
    // Construction reads the two port probes, then the ends of the controller's ranges.
    const auto first_probe = std::ranges::find(codes, probes.front());
    const auto probed = static_cast<long>(std::min(present + 1, probes.size()));
    ASSERT_GE(codes.end() - first_probe, probed);
    ASSERT_GE(first_probe - codes.begin(), 3);
    EXPECT_EQ(std::vector(codes.begin(), codes.begin() + 3),
              (std::vector<std::uint32_t>{0x260007, 0x260003, 0x6B0000}));
    EXPECT_EQ(std::vector(first_probe, first_probe + probed),
              std::vector(probes.begin(), probes.begin() + probed));
  }
}

}  // namespace
