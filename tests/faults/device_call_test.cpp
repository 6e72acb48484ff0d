// Each single device call of a start or a read fails: plainly, or after storing a word.
#include <set>

#include "tests/faults/faulty_machine.h"
#include "tests/support/documents.h"
#include "tests/support/rows.h"

namespace {

constexpr uint32_t kDeviceCode = 1;  // what the double's failing calls return

// What a document shows of an item: its value, and all that does not depend on its reading.
struct Shown {
  std::string value{};
  std::string rest{};
  friend bool operator==(const Shown&, const Shown&) = default;
};
using Items = std::map<uint32_t, Shown>;

Items shown_items(const json_t* document) {
  Items items;
  for_each_item(document, [&](uint32_t id, json_t* shared) {
    const JsonOwner element(json_copy(shared));
    Shown item;
    for (const char* key : {"v", "bv", "sv", "min", "max"}) {
      item.value += text_of(json_object_get(element.get(), key)) + ' ';
      json_object_del(element.get(), key);
    }
    item.rest = text_of(element.get());
    items[id] = item;
  });
  return items;
}

class FailingCall : public FaultyMachine, public ::testing::WithParamInterface<bool> {
 protected:
  void fail_call(unsigned int n) {
    device.calls.clear();
    device.failing_call = n;
    device.failing_call_stores = GetParam();
  }
};

// A presence that cannot be asked takes items away. Any other call is one item's matter: a setting
// and its factory default where it is an end of their range.
TEST_P(FailingCall, OfAStartCostsOneItemOrWhatItAnnounces) {
  const Items reference = shown_items(reference_document().get());
  ASSERT_EQ(KovaIoTInitialize(), IOT_STATUS_SUCCESS);
  const auto start = device.calls;
  for (unsigned int n = 1; n <= start.size(); ++n) {
    const uint32_t code = start[n - 1].code;
    SCOPED_TRACE(testing::Message() << "call " << n << ", code " << std::hex << code);
    stop();
    fail_call(n);
    EXPECT_EQ(KovaIoTInitialize(), IOT_STATUS_SUCCESS);
    const Items items = shown_items(host_document().get());
    size_t changed = 0;
    for (const auto& [id, item] : items) {
      ASSERT_TRUE(reference.contains(id)) << std::hex << id;
      EXPECT_EQ(item.rest, reference.at(id).rest);
      changed += item == reference.at(id) ? 0 : 1;
    }
    const size_t lost = reference.size() - items.size();
    if (presence_codes().contains(code)) {
      EXPECT_EQ(changed, 0U);
    } else {
      const bool range = code >= 0x6B0000 && code < 0x6D0000;
      EXPECT_LE(changed + lost, range ? 2U : 1U);
    }
  }
}

// Later words of a text, and a current that tells idleness, cost a read nothing.
TEST_P(FailingCall, OfAReadLeavesTheValueAndTellsWhy) {
  ASSERT_EQ(KovaIoTInitialize(), IOT_STATUS_SUCCESS);
  for (const auto& [id, preset] : item_presets()) {
    device.calls.clear();
    const Reading undisturbed = read_item(id, preset.get());
    const size_t calls = device.calls.size();
    for (unsigned int n = 1; n <= calls; ++n) {
      SCOPED_TRACE(testing::Message() << std::hex << id << ", call " << n);
      fail_call(n);
      const Reading reading = read_item(id, preset.get());
      const std::set<uint32_t> reasons{kDeviceCode, IOT_STATUS_READ_FAILED, IOT_STATUS_NOT_FOUND};
      if (n == 1) {
        EXPECT_EQ(reading.status, IOT_STATUS_NOT_READY);
      } else if (reading.status != undisturbed.status) {
        EXPECT_TRUE(reasons.contains(reading.status)) << reading;
      }
      if (reading.status != undisturbed.status) {
        EXPECT_EQ(reading.value, text_of(preset.get()));
      }
    }
    EXPECT_EQ(read_item(id, preset.get()), undisturbed) << std::hex << id;
  }
}

INSTANTIATE_TEST_SUITE_P(Plainly, FailingCall, ::testing::Values(false));
INSTANTIATE_TEST_SUITE_P(AfterStoring, FailingCall, ::testing::Values(true));

}  // namespace
