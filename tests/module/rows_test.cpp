// Relations that a mistyped or forgotten row breaks, over the rows of all families.
#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>
#include <set>

#include "include/kova_iot.h"
#include "module/families.h"
#include "tests/support/documents.h"
#include "tests/support/reference_machine.h"
#include "tests/support/wrapped_loader.h"

namespace {

using catalogue::Row;
using catalogue::Sheet;

// Calls `check` with each row that hosts see, and names it in what fails.
template <typename Check>
void for_each_item_row(const Check& check) {
  for (const Sheet* sheet : families::sheets()) {
    for (const Row& row : sheet->rows) {
      if (is_published(row)) {
        SCOPED_TRACE(testing::Message() << sheet->name << " item 0x" << std::hex << row.id << " \""
                                        << row.name << "\"");
        check(*sheet, row);
      }
    }
  }
}

// The numbers before "=" or "|" of an option list such as "0=OFF|1=ON".
std::vector<int> values_of(std::string_view list) {
  std::vector<int> values;
  while (!list.empty()) {
    list.remove_prefix(list.starts_with('\n') ? 1 : 0);
    int value = -1;
    const auto parsed = std::from_chars(list.data(), list.data() + list.size(), value);
    EXPECT_EQ(parsed.ec, std::errc()) << list;
    values.push_back(value);
    list.remove_prefix(std::min(list.find('|'), list.size() - 1) + 1);
  }
  return values;
}

TEST(Rows, AgreeWithEachOther) {
  for_each_item_row([&](const Sheet& sheet, const Row& row) {
    EXPECT_EQ(row.id & 0xFFFF0000U, sheet.id);
    EXPECT_FALSE(row.name.empty());
    EXPECT_TRUE(!row.range || row.range->min < row.range->max);
    for (const int value : values_of(row.options)) {
      ASSERT_TRUE(row.range) << "options without a range";
      EXPECT_TRUE(row.range->min <= value && value <= row.range->max) << value;
    }
    const std::vector<int> options = values_of(row.options);
    for (const int value : values_of(row.offered)) {
      EXPECT_NE(std::ranges::count(options, value), 0) << value << " is offered, but no option";
    }
    for (const unsigned int other : {row.written_at, row.default_of}) {
      EXPECT_TRUE(other == 0 || std::ranges::count(sheet.rows, other, &Row::id) == 1) << other;
    }
  });
}

// Orders with one place for all, with one place empty and another taken twice, and all too late.
constexpr auto kSame = [](const auto&) { return 1U; };
constexpr auto kTwice = [](const auto& family) { return family.start == 3 ? 2 : family.start; };
constexpr auto kLate = [](const auto& family) { return family.start + 1; };

TEST(Families, AnOrderHasEachPlaceOnce) {
  EXPECT_TRUE(families::is_an_order(families::kStart));
  EXPECT_FALSE(families::is_an_order(kSame));
  EXPECT_FALSE(families::is_an_order(kTwice));
  EXPECT_FALSE(families::is_an_order(kLate));
}

TEST(Rows, HaveACodeEach) {
  std::set<unsigned int> seen;
  for (const Sheet* sheet : families::sheets()) {
    for (const Row& row : sheet->rows) {
      // The battery's error codes are bits of its status word.
      const bool shares = row.id == 0x14191200;
      EXPECT_TRUE(!row.code || shares || seen.insert(*row.code).second)
          << "device code twice: " << std::hex << row.id;
    }
  }
}

// On the reference machine, which has every item.
class ReferenceRows : public testing::Test {
 protected:
  ReferenceRows() {
    wrapped_loader::install_device_library();
    load_reference_machine(&device);
    EXPECT_EQ(KovaIoTInitialize(), IOT_STATUS_SUCCESS);
  }
  void TearDown() override { KovaIoTUninitialize(); }

  DeviceDouble device;
};

TEST_F(ReferenceRows, StandInTheDocument) {
  const JsonOwner document(json_object());
  ASSERT_EQ(KovaIoTGetMDCapability(document.get()), IOT_STATUS_SUCCESS);
  for_each_item_row([&](const Sheet& sheet, const Row& row) {
    const std::string name(sheet.name);
    const unsigned int id = row.id + (sheet.instances ? 1 : 0);
    int found = 0;
    for_each_item(json_object_get(document.get(), name.c_str()),
                  [&](std::uint32_t shown, json_t*) { found += shown == id ? 1 : 0; });
    EXPECT_EQ(found, 1) << "not in the document: is its code in reference_machine.json, and does "
                           "the adapter read the group that it is in?";
  });
}

TEST_F(ReferenceRows, AreReadFromTheirCodes) {
  for_each_item_row([&](const Sheet& sheet, const Row& row) {
    device.calls.clear();
    const JsonOwner value(json_null());
    KovaIoTGetMDValue(row.id + (sheet.instances ? 1 : 0), value.get());
    const std::vector<std::uint32_t> read = device.codes_read();
    std::set<std::uint32_t> expected;
    if (row.asks_first) {
      expected.insert(*row.asks_first);
    }
    for (unsigned int word = 0; word < row.words; ++word) {
      expected.insert(*row.code + word);
    }
    for (const std::uint32_t code : expected) {
      EXPECT_NE(std::ranges::count(read, code), 0) << "does not read 0x" << std::hex << code;
    }
  });
}

}  // namespace
