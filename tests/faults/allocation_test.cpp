// Memory runs out at each single block that an entry point takes.
#include <array>

#include "devices/pic/device_pic.h"
#include "tests/faults/allocation_faults.h"
#include "tests/faults/faulty_machine.h"
#include "tests/support/documents.h"

namespace {

using allocation_faults::live_blocks;
using allocation_faults::refuse_each_block;
using allocation_faults::Shortage;

constexpr uint32_t kPowerSwitch = 0x14140B01;

// Every block that the module took in a test must have been given back by its end.
class MemoryShortage : public FaultyMachine {
 protected:
  void SetUp() override {
    item_presets();
    KovaIoTInitialize();  // a first start fills the battery's maps, which then stay
    stop();
    blocks_before_ = live_blocks();
  }
  void TearDown() override {
    stop();
    EXPECT_EQ(live_blocks(), blocks_before_);
  }

 private:
  size_t blocks_before_ = 0;
};

class AnyShortage : public MemoryShortage, public ::testing::WithParamInterface<Shortage> {};

// Everything in `part` stands in `whole` with the same content; `part` may lack keys and elements.
bool is_part_of(const json_t* part, const json_t* whole) {
  if (!json_is_object(part) && !json_is_array(part)) {
    return json_equal(part, whole) != 0;
  }
  const char* key = nullptr;
  json_t* value = nullptr;
  json_object_foreach(const_cast<json_t*>(part), key, value) {
    if (!is_part_of(value, json_object_get(whole, key))) {
      return false;
    }
  }
  size_t in_whole = 0;
  for (size_t i = 0; i < json_array_size(part); ++i) {
    while (!is_part_of(json_array_get(part, i), json_array_get(whole, in_whole++))) {
      if (in_whole >= json_array_size(whole)) {
        return false;
      }
    }
  }
  return true;
}

testing::AssertionResult host_has(const json_t* reference) {
  const JsonOwner document = host_document();
  return json_equal(document.get(), reference) != 0
             ? testing::AssertionSuccess()
             : testing::AssertionFailure() << first_difference(document.get(), reference);
}

TEST_F(MemoryShortage, StartMakesAModuleThatAnswersOrNone) {
  const JsonOwner reference = reference_document();
  const auto start = [] { return KovaIoTInitialize(); };
  const unsigned int refused =
      refuse_each_block(Shortage::kPassing, start, [&](unsigned int n, uint32_t status) {
        const bool started = status == IOT_STATUS_SUCCESS;
        const JsonOwner document = host_document();
        EXPECT_TRUE(started || status == IOT_STATUS_NOT_READY) << n;
        EXPECT_TRUE(document == nullptr || (started && is_part_of(document.get(), reference.get())))
            << n;
        EXPECT_EQ(read_item(kPowerSwitch, json_null()).status, status) << n;
        stop();
        EXPECT_EQ(KovaIoTInitialize(), IOT_STATUS_SUCCESS) << n;
        EXPECT_TRUE(host_has(reference.get())) << n;
        stop();
      });
  EXPECT_GT(refused, 0U);
}

TEST_P(AnyShortage, DocumentIsMergedAsFarAsMemoryWent) {
  const JsonOwner reference = reference_document();
  ASSERT_EQ(KovaIoTInitialize(), IOT_STATUS_SUCCESS);
  JsonOwner target(json_object());
  const auto merge = [&] { return KovaIoTGetMDCapability(target.get()); };
  const unsigned int refused =
      refuse_each_block(GetParam(), merge, [&](unsigned int n, uint32_t status) {
        EXPECT_EQ(status, IOT_STATUS_NOT_READY) << n;
        clear_base_times(target.get());
        EXPECT_TRUE(is_part_of(target.get(), reference.get())) << n;
        EXPECT_TRUE(host_has(reference.get())) << n;
        target.reset(json_object());
      });
  EXPECT_GT(refused, 0U);
}

TEST_P(AnyShortage, ReadIsWholeOrLeavesTheValue) {
  ASSERT_EQ(KovaIoTInitialize(), IOT_STATUS_SUCCESS);
  const auto refuse_read = [&](uint32_t id, const json_t* preset) {
    const Reading undisturbed = read_item(id, preset);
    const std::string untouched = text_of(preset);
    forget_unknown_items();
    JsonOwner value(json_deep_copy(preset));
    const auto read = [&] { return KovaIoTGetMDValue(id, value.get()); };
    refuse_each_block(GetParam(), read, [&](unsigned int n, uint32_t status) {
      // jansson keeps a string that it cannot replace, and that is no error.
      const std::string held = text_of(value.get());
      EXPECT_TRUE(status == IOT_STATUS_NOT_READY || status == undisturbed.status) << id << ' ' << n;
      EXPECT_TRUE(held == untouched || (held == undisturbed.value && status == undisturbed.status))
          << id << ' ' << n;
      EXPECT_EQ(read_item(id, preset), undisturbed) << id << ' ' << n;
      value.reset(json_deep_copy(preset));
    });
  };
  for (const auto& [id, preset] : item_presets()) {
    refuse_read(id, preset.get());
  }
  for (const uint32_t id :
       {0x1414FF01U, 0x1415074FU, 0x1416075FU, 0x141706FFU, 0x1418FF01U, 0x1419FF00U}) {
    refuse_read(id, item_presets().at(kPowerSwitch).get());
  }
}

TEST_P(AnyShortage, WriteReachesTheDeviceOrIsRefused) {
  struct Write {
    uint32_t id;
    const char* value;
  };
  constexpr std::array kWrites{
      Write{kPowerSwitch, "0"},  Write{0x14150711, "1"},      Write{0x14150721, "0.5"},
      Write{0x14150731, "10"},   Write{0x1415074F, "1"},      Write{0x14160711, "60"},
      Write{0x14160716, "11.5"}, Write{0x1416071A, "1"},      Write{0x1416070D, "1"},
      Write{0x14170111, "1"},    Write{kPowerSwitch, "\"\""},
  };
  ASSERT_EQ(KovaIoTInitialize(), IOT_STATUS_SUCCESS);
  for (const auto& [id, text] : kWrites) {
    const JsonOwner value(json_loads(text, JSON_DECODE_ANY, nullptr));
    const auto write = [&, item = id] { return KovaIoTSetMDValue(item, value.get()); };
    const uint32_t undisturbed = write();
    forget_unknown_items();
    refuse_each_block(GetParam(), write, [&](unsigned int n, uint32_t status) {
      EXPECT_EQ(status, IOT_STATUS_NOT_READY) << n;
      EXPECT_EQ(write(), undisturbed) << n;
    });
  }
}

TEST_P(AnyShortage, AControllerWhoseRangesCannotBeKeptIsStillThere) {
  const auto construct = [] {
    Device_PIC::bound_map.clear();
    const Device_PIC controller;
    return Device_PIC::bound_map.size();
  };
  const size_t all_ranges = construct();
  const auto check = [&](unsigned int n, size_t ranges) { EXPECT_LE(ranges, all_ranges) << n; };
  EXPECT_GT(refuse_each_block(GetParam(), construct, check), 0U);
}

TEST_P(AnyShortage, TheOtherEntryPointsTakeNoMemory) {
  ASSERT_EQ(KovaIoTInitialize(), IOT_STATUS_SUCCESS);
  allocation_faults::Scope scope(1, GetParam());
  const uint32_t handler = KovaIoTSetMDEventHandler(nullptr);
  const uint32_t module = KovaIoTGetModuleID();
  const uint32_t end = KovaIoTUninitialize();
  EXPECT_FALSE(scope.end());
  EXPECT_EQ(handler, IOT_STATUS_SUCCESS);
  EXPECT_EQ(module, KOVA_IOT_MODULE_ID);
  EXPECT_EQ(end, IOT_STATUS_SUCCESS);
}

INSTANTIATE_TEST_SUITE_P(Shortages, AnyShortage,
                         ::testing::Values(Shortage::kPassing, Shortage::kLasting),
                         ::testing::PrintToStringParamName());

}  // namespace
