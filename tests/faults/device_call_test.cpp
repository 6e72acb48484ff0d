// Each single device call of a start or a read fails: plainly, or after storing a word.
#include <algorithm>
#include <array>

#include "devices/addon_board/device_trk7000.h"
#include "devices/gsensor/device_gsensor.h"
#include "devices/pic/device_pic.h"
#include "devices/sbattery/sbattery_items.h"
#include "devices/sdram/sdram_items.h"
#include "tests/faults/faulty_machine.h"
#include "tests/support/documents.h"

namespace {

using Calls = std::vector<DeviceDouble::Call>;

constexpr uint32_t kDeviceCode = 1;  // what the double's failing calls return
constexpr uint32_t kAskedForPort8 = 0x260007;

// Presence is asked for a family and again before each block of its items; memory modules are
// counted before each of them. The `nth` asking of `code` takes the items with id & mask == value.
struct Probe {
  uint32_t code;
  int nth;
  uint32_t mask;
  uint32_t value;
};
constexpr uint32_t kFamily = 0xFFFF0000;
constexpr uint32_t kGroup = 0xFFFFFF00;
constexpr uint32_t kBlock = 0xFFFFFFF0;
constexpr uint32_t kModule = 0xFFFF00FF;
constexpr std::array kProbes{
    Probe{0x260003, 1, kFamily, 0x14140000}, Probe{0x200000, 1, kFamily, 0x14140000},
    Probe{0xA00000, 2, kFamily, 0x14180000}, Probe{0xA00000, 3, kFamily, 0x14180000},
    Probe{0xA00000, 4, kModule, 0x14180002}, Probe{0xB00000, 1, kFamily, 0x14190000},
    Probe{0x800000, 1, kFamily, 0x14170000}, Probe{0x800000, 2, kGroup, 0x14170600},
    Probe{0x800000, 3, kGroup, 0x14170300},  Probe{0x800000, 4, kBlock, 0x14170110},
    Probe{0x800000, 5, kBlock, 0x14170120},  Probe{0x600008, 1, kFamily, 0x14160000},
    Probe{0x600008, 2, kGroup, 0x14160600},  Probe{0x600008, 3, kBlock, 0x14160720},
    Probe{0x600008, 4, kBlock, 0x14160710},  Probe{0x600008, 5, kGroup, 0x14160800},
    Probe{0x400000, 1, kFamily, 0x14150000}, Probe{0x400000, 2, kGroup, 0x14150900},
    Probe{0x400000, 3, kBlock, 0x14150710},  Probe{0x400000, 4, kBlock, 0x14150720},
    Probe{0x400000, 5, kBlock, 0x14150730},  Probe{0x400000, 6, kBlock, 0x14150740},
};

bool is_probe(uint32_t code) {
  return code == kAskedForPort8 || std::ranges::find(kProbes, code, &Probe::code) != kProbes.end();
}

// A text of four characters a word, of which word `index` could not be read: the characters before
// it stand there once more, or NULs, at which a JSON text ends.
std::string with_repeated_word(std::string text, size_t index) {
  return index == 0 ? "" : text.replace(4 * index, 4, text, 4 * (index - 1), 4);
}

// The answer to a read of `id` of which the last call in `calls` fails.
Reading expected_reading(uint32_t id, const Calls& calls, const Reading& undisturbed, bool stores) {
  const std::string untouched = text_of(item_presets().at(id).get());
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
  const bool part_number = family == 0x1418 && selector > 0x11 && selector <= 0x15;
  const bool vendor_data = family == 0x1418 && selector > 0x21;
  const bool maker = family == 0x1419 && selector >= 0x24 && selector < 0x28;
  if (part_number || vendor_data || maker) {  // the double's garbage word is no UTF-8
    const std::string text = undisturbed.value.substr(1, undisturbed.value.size() - 2);
    const size_t word = selector - (part_number ? 0x11 : vendor_data ? 0x21 : 0x24);
    return {IOT_STATUS_SUCCESS, stores ? untouched : '"' + with_repeated_word(text, word) + '"'};
  }
  const bool idle_test = family == 0x1419 && (group == 0x0E || group == 0x0F) && selector == 0x0A;
  return idle_test ? undisturbed : Reading{kDeviceCode, untouched};
}

// What a document shows of an item: its value, its range and everything else.
struct Shown {
  std::string value{};
  std::string range{};
  std::string rest{};
  friend bool operator==(const Shown&, const Shown&) = default;
  friend std::ostream& operator<<(std::ostream& out, const Shown& shown) {
    return out << shown.value << ' ' << shown.range << ' ' << shown.rest;
  }
};
using Items = std::map<uint32_t, Shown>;

Items shown_items(const json_t* document) {
  Items items;
  for_each_item(document, [&](uint32_t id, json_t* shared) {
    Shown& item = items[id];  // the board's elements stand in two groups
    const JsonOwner copy(json_copy(shared));
    json_t* element = copy.get();
    for (const char* key : {"v", "bv", "sv"}) {
      item.value += text_of(json_object_get(element, key));
      json_object_del(element, key);
    }
    for (const char* key : {"min", "max"}) {
      item.range += text_of(json_object_get(element, key));
      json_object_del(element, key);
    }
    item.rest += text_of(element);
  });
  return items;
}

void make_unreadable(uint32_t id, Items* items) {
  const json_t* preset = item_presets().at(id).get();
  items->at(id).value = json_is_string(preset) ? "\"N/A\"" : json_is_real(preset) ? "0.0" : "0";
}

// The items whose codes the three families with catalogues of codes read.
uint32_t item_of_code(uint32_t code) {
  for (const RawMap* codes :
       {&Device_PIC::kova_id_map, &Device_TRK7000::kova_id_map, &Device_GSensor::kova_id_map}) {
    if (const auto row = std::ranges::find(*codes, code, &RawMap::value_type::second);
        row != codes->end()) {
      return row->first;
    }
  }
  return 0;
}

class FailingCall : public FaultyMachine, public ::testing::WithParamInterface<bool> {
 protected:
  struct Read {
    uint32_t id;
    Reading reading;
    Calls calls;
  };

  Read record(uint32_t id) {
    device.calls.clear();
    const Reading reading = read_item(id, item_presets().at(id).get());
    return {id, reading, device.calls};
  }

  // The reads of the memory modules' and the battery's fields, in the order of a start.
  std::vector<Read> record_texts() {
    std::vector<Read> reads;
    for (const uint32_t module : {1U, 2U}) {
      for (const catalogue::Row& row : sdram::kSheet.rows) {
        reads.push_back(record(row.id + module));
      }
    }
    for (const catalogue::Row& row : sbattery::kSheet.rows) {
      reads.push_back(record(row.id));
    }
    return reads;
  }

  void fail_call(unsigned int n) {
    device.failing_call = n;
    device.failing_call_stores = GetParam();
  }
};

// A field shows what its single read would tell, with "N/A" or 0 for a failure; a text that is no
// UTF-8 cannot be shown at all. `place` counts the fields' calls, those that ask for presence not.
template <typename Reads>
void fail_field(const Reads& reads, size_t place, bool stores, Items* items) {
  for (const auto& [id, undisturbed, calls] : reads) {
    const size_t own_calls = calls.size() - 1;
    if (place < own_calls) {
      const auto last = calls.begin() + static_cast<std::ptrdiff_t>(place) + 2;
      const Reading reading = expected_reading(id, {calls.begin(), last}, undisturbed, stores);
      if (reading.status != IOT_STATUS_SUCCESS) {
        make_unreadable(id, items);
      } else if (reading.value == text_of(item_presets().at(id).get())) {
        items->erase(id);
      } else {
        items->at(id).value = reading.value;
      }
      return;
    }
    place -= own_calls;
  }
}

TEST_P(FailingCall, OfAStartCostsOneItemOrWhatItAnnounces) {
  ASSERT_EQ(KovaIoTInitialize(), IOT_STATUS_SUCCESS);
  const Calls start = device.calls;
  const auto texts = record_texts();
  const Items reference = shown_items(reference_document().get());
  size_t text_calls = 0;
  for (unsigned int n = 1; n <= start.size(); ++n) {
    const uint32_t code = start[n - 1].code;
    SCOPED_TRACE(testing::Message() << "call " << n << ", code " << std::hex << code);
    Items expected = reference;
    const auto nth = std::count(start.begin(), start.begin() + n, start[n - 1]);
    for (const Probe& probe : kProbes) {
      if (probe.code == code && probe.nth == nth) {
        std::erase_if(expected,
                      [&](const auto& item) { return (item.first & probe.mask) == probe.value; });
      }
    }
    const uint32_t setting = (code & 0xFU) + 1;
    if (code >= 0xA00000 && !is_probe(code)) {
      fail_field(texts, text_calls++, GetParam(), &expected);
    } else if (code >= 0x6B0000 && code < 0x6D0000) {  // an end of a range: both stay the default
      for (const uint32_t id : {0x14160710 + setting, 0x14160720 + setting}) {
        const Range range = Device_PIC::init_bound_map().at(id);
        expected.at(id).range = text_of(JsonOwner(json_real(range.at(MIN))).get()) +
                                text_of(JsonOwner(json_real(range.at(MAX))).get());
      }
    } else if (code < 0x400000 && !is_probe(code)) {  // a port keeps its place in the document
      const std::map<uint32_t, uint32_t> kinds{
          {0x22, 0x0800}, {0x23, 0x0900}, {0x24, 0x0400}, {0x25, 0x0200}, {0x27, 0x0B00}};
      make_unreadable(0x14140001 + kinds.at(code >> 16) + (code & 0xFU), &expected);
    } else if (!is_probe(code)) {
      EXPECT_EQ(expected.erase(item_of_code(code)), 1U);
    }
    stop();
    fail_call(n);
    EXPECT_EQ(KovaIoTInitialize(), IOT_STATUS_SUCCESS);
    EXPECT_EQ(shown_items(host_document().get()), expected);
  }
}

TEST_P(FailingCall, OfAReadLeavesTheValueAndTellsWhy) {
  ASSERT_EQ(KovaIoTInitialize(), IOT_STATUS_SUCCESS);
  for (const auto& [id, preset] : item_presets()) {
    const Read undisturbed = record(id);
    const Calls& calls = undisturbed.calls;
    for (unsigned int n = 1; n <= calls.size(); ++n) {
      fail_call(n);
      EXPECT_EQ(
          read_item(id, preset.get()),
          expected_reading(id, {calls.begin(), calls.begin() + n}, undisturbed.reading, GetParam()))
          << std::hex << id << ", call " << n;
    }
    EXPECT_EQ(read_item(id, preset.get()), undisturbed.reading) << std::hex << id;
  }
}

INSTANTIATE_TEST_SUITE_P(Plainly, FailingCall, ::testing::Values(false));
INSTANTIATE_TEST_SUITE_P(AfterStoring, FailingCall, ::testing::Values(true));

}  // namespace
