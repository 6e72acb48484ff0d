// Each single device call of a start, a read or a write fails: plainly, or after storing a word.
#include <array>

#include "tests/faults/expected_document.h"
#include "tests/faults/faulty_machine.h"
#include "tests/support/documents.h"

namespace {

constexpr uint32_t kDeviceCode = 1;  // what the double's failing calls return

class FailingCall : public FaultyMachine, public ::testing::WithParamInterface<bool> {
 protected:
  // Runs `call` with its n-th device call failing, for n = 1, 2, 3 ... as far as `calls` go.
  template <typename Call>
  void fail_each_call(size_t calls, const Call& call) {
    for (unsigned int n = 1; n <= calls; ++n) {
      device.failing_call = n;
      device.failing_call_stores = GetParam();
      call(n);
      EXPECT_EQ(device.failing_call, 0U);
    }
  }
};

TEST_P(FailingCall, OfAStartCostsOneItemOrWhatItAnnounces) {
  ASSERT_EQ(KovaIoTInitialize(), IOT_STATUS_SUCCESS);
  const std::vector<DeviceDouble::Call> undisturbed = device.calls;
  EXPECT_GT(undisturbed.size(), 200U);
  stop();
  fail_each_call(undisturbed.size(), [&](unsigned int n) {
    const auto last = undisturbed.begin() + n;
    SCOPED_TRACE(testing::Message() << "call " << n << ": " << testing::PrintToString(*(last - 1)));
    EXPECT_EQ(KovaIoTInitialize(), IOT_STATUS_SUCCESS);
    const JsonOwner expected = expected_document({undisturbed.begin(), last}, GetParam());
    EXPECT_EQ(first_difference(host_document().get(), expected.get()), "");
    stop();
  });
}

// The answer to a read of `id` whose last call in `calls` fails.
Reading expected_reading(uint32_t id, const std::vector<DeviceDouble::Call>& calls,
                         const Reading& undisturbed, const std::string& untouched, bool stores) {
  const uint32_t family = id >> 16;
  const uint32_t group = (id >> 8) & 0xFFU;
  const uint32_t selector = calls.back().code & 0xFFU;
  if (calls.size() == 1) {
    return {IOT_STATUS_NOT_READY, untouched};
  }
  if (family >= 0x1415 && family <= 0x1417) {
    const bool read_with_its_group = group == 0x06;
    if (!read_with_its_group || calls.size() == 2) {  // 2: presence, asked again for the group
      return {IOT_STATUS_READ_FAILED, untouched};
    }
    const bool own = calls.size() == (id & 0xFU) + 2;
    return own ? Reading{IOT_STATUS_NOT_FOUND, untouched} : undisturbed;
  }
  const bool later_part = family == 0x1418 && selector > 0x11 && selector <= 0x15;
  const bool later_data = family == 0x1418 && selector > 0x21;
  const bool name = family == 0x1419 && selector >= 0x24 && selector < 0x28;
  if (later_part || later_data || name) {
    const std::string text = undisturbed.value.substr(1, undisturbed.value.size() - 2);
    const size_t word = selector - (later_part ? 0x11 : later_data ? 0x21 : 0x24);
    return {IOT_STATUS_SUCCESS,
            stores ? untouched : '"' + text_with_repeated_word(text, word) + '"'};
  }
  const bool idle_test = family == 0x1419 && (group == 0x0E || group == 0x0F) && selector == 0x0A;
  return idle_test ? undisturbed : Reading{kDeviceCode, untouched};
}

TEST_P(FailingCall, OfAReadLeavesTheValueAndTellsWhy) {
  ASSERT_EQ(KovaIoTInitialize(), IOT_STATUS_SUCCESS);
  for (const auto& [id, preset] : item_presets()) {
    device.calls.clear();
    const Reading undisturbed = read_item(id, preset.get());
    const std::vector<DeviceDouble::Call> calls = device.calls;
    fail_each_call(calls.size(), [&, item = id, value = preset.get()](unsigned int n) {
      SCOPED_TRACE(testing::Message() << std::hex << item << ", call " << n << ": "
                                      << testing::PrintToString(calls[n - 1]));
      EXPECT_EQ(read_item(item, value), expected_reading(item, {calls.begin(), calls.begin() + n},
                                                         undisturbed, text_of(value), GetParam()));
    });
    EXPECT_EQ(read_item(id, preset.get()), undisturbed);
  }
}

INSTANTIATE_TEST_SUITE_P(Plainly, FailingCall, ::testing::Values(false));
INSTANTIATE_TEST_SUITE_P(AfterStoring, FailingCall, ::testing::Values(true));

TEST_F(FaultyMachine, FailingCallsOfAWrite) {
  struct Case {
    uint32_t id;
    std::vector<uint32_t> statuses;  // by the call that fails
  };
  const std::array cases{
      Case{0x14140B01, {IOT_STATUS_NOT_READY, kDeviceCode, kDeviceCode}},
      Case{0x14150711, {IOT_STATUS_WRITE_FAILED}},
      Case{0x14160711, {IOT_STATUS_WRITE_FAILED}},
  };
  ASSERT_EQ(KovaIoTInitialize(), IOT_STATUS_SUCCESS);
  const JsonOwner off(json_integer(0));
  for (const auto& [id, statuses] : cases) {
    for (size_t n = 0; n < statuses.size(); ++n) {
      device.failing_call = static_cast<unsigned int>(n + 1);
      EXPECT_EQ(KovaIoTSetMDValue(id, off.get()), statuses[n]) << std::hex << id << " call " << n;
    }
    device.calls.clear();
    EXPECT_EQ(KovaIoTSetMDValue(id, off.get()), IOT_STATUS_SUCCESS) << std::hex << id;
    EXPECT_EQ(device.calls.size(), statuses.size());
  }
}

}  // namespace
