// Lookups and raw reads over catalogue maps.
#include "framework/catalogue.h"

#include <gtest/gtest.h>

#include <array>

#include "tests/support/device_double.h"

namespace {

constexpr unsigned int kPresence = 0x14160001;
constexpr unsigned int kTexts = 0x14160600;

TEST(Catalogue, LookupsOfUnknownIdsGiveNothingAndChangeNothing) {
  const StringMap names{{1, "one"}};
  std::string out = "before";
  EXPECT_EQ(catalogue::get_string_from_map(names, 2, &out), IOT_STATUS_NOT_FOUND);
  EXPECT_EQ(out, "before");
  EXPECT_EQ(catalogue::get_string_from_map(names, 1, &out), IOT_STATUS_SUCCESS);
  EXPECT_EQ(out, "one");
  EXPECT_EQ(catalogue::text_by_id(names, 2), "");
  EXPECT_TRUE(catalogue::range_by_id({{1, {{MIN, 0.0}}}}, 2).empty());
}

TEST(Catalogue, UpdateRangeReplacesBothEndsOrMakesTheRange) {
  RangeMap ranges{{1, {{MAX, 5.0}}}};
  for (const unsigned int id : {1U, 2U}) {
    catalogue::update_range(ranges, id, -1.5, 9.0);
    EXPECT_EQ(ranges[id], (Range{{MIN, -1.5}, {MAX, 9.0}})) << id;
  }
}

TEST(Catalogue, PresenceNeedsAnAnswerThatIsNotZero) {
  DeviceDouble device;
  RawMap raw_ids{{kPresence, 0x600008}};
  EXPECT_FALSE(catalogue::is_available(nullptr, raw_ids, kPresence));
  for (const auto& [word, expected] : {std::pair{0U, false}, {1U, true}, {0x80000000U, true}}) {
    device.values[0x600008] = word;
    EXPECT_EQ(catalogue::is_available(&DeviceDouble::get, raw_ids, kPresence), expected) << word;
  }
  device.read_status[0x600008] = 7;
  device.stored_on_failure[0x600008] = 1;
  EXPECT_FALSE(catalogue::is_available(&DeviceDouble::get, raw_ids, kPresence));
}

TEST(Catalogue, RawReadOfAnUnknownItemReadsCodeZeroAndKeepsTheEntry) {
  DeviceDouble device;
  device.values = {{0, 42}, {0x10, 5}};
  device.read_status[0x11] = 9;
  RawMap raw_ids{{1, 0x10}, {2, 0x11}};
  unsigned int value = 77;
  EXPECT_EQ(catalogue::read_raw(nullptr, raw_ids, 1, &value), IOT_STATUS_NOT_READY);
  EXPECT_EQ(catalogue::read_raw(&DeviceDouble::get, raw_ids, 2, &value), IOT_STATUS_READ_FAILED);
  EXPECT_EQ(value, 77U);
  EXPECT_EQ(catalogue::read_raw(&DeviceDouble::get, raw_ids, 3, &value), IOT_STATUS_SUCCESS);
  EXPECT_EQ(value, 42U);
  EXPECT_EQ(raw_ids, (RawMap{{1, 0x10}, {2, 0x11}, {3, 0}}));
}

TEST(Catalogue, BulkReadSkipsWhatFailsAndAsksForPresenceFirst) {
  DeviceDouble device;
  device.values = {{0x600008, 1}, {0x10, 5}, {0x12, 6}};
  device.read_status[0x11] = 9;
  RawMap raw_ids{{kPresence, 0x600008}, {1, 0x10}, {2, 0x11}, {3, 0x12}};
  const ReadEntry entry = &DeviceDouble::get;
  const auto read = [&](unsigned int first, unsigned int end, RawMap* out) {
    catalogue::read_raw_range(entry, raw_ids, kPresence, first, end, out);
  };

  RawMap out{{99, 99}};
  read(1, 4, &out);
  EXPECT_EQ(out, (RawMap{{1, 5}, {3, 6}}));
  EXPECT_EQ(device.codes_read(), (std::vector<std::uint32_t>{0x600008, 0x10, 0x11, 0x12}));
  read(1, 1, &out);
  EXPECT_TRUE(out.empty());
  device.values[0x600008] = 0;
  out = {{99, 99}};
  read(1, 4, &out);
  EXPECT_EQ(out, (RawMap{{99, 99}}));
}

std::string text_unless_zero(unsigned int word) {
  return word != 0 ? "text" : "";
}

TEST(Catalogue, TextsOfInformationItems) {
  using catalogue::Row;
  static constexpr catalogue::Shape kText{.role = catalogue::Role::kIdentity,
                                          .kind = catalogue::Kind::kText};
  static constexpr std::array kRows{
      Row{.id = kPresence, .code = 0x600008}, Row{.id = kTexts},
      Row{.id = kTexts + 1, .code = 0x10, .as = kText, .text = text_unless_zero},
      Row{.id = kTexts + 2, .code = 0x11, .as = kText, .text = text_unless_zero}};
  static constexpr catalogue::RowTable kTable(kRows, {.texts = kTexts});
  DeviceDouble device;
  device.values = {{0x600008, 1}, {0x10, 1}, {0x11, 0}};
  RawMap codes = catalogue::code_map(kRows);
  StringMap out{{9, "kept"}};
  const auto read = [&](ReadEntry entry) {
    return catalogue::read_texts(entry, codes, kTable, &out);
  };
  EXPECT_EQ(read(nullptr), IOT_STATUS_NOT_READY);
  device.values[0x600008] = 0;
  EXPECT_EQ(read(&DeviceDouble::get), IOT_STATUS_READ_FAILED);
  EXPECT_EQ(out, (StringMap{{9, "kept"}}));
  device.values[0x600008] = 1;
  EXPECT_EQ(read(&DeviceDouble::get), IOT_STATUS_SUCCESS);
  EXPECT_EQ(out, (StringMap{{kTexts + 1, "text"}}));  // an empty text is not stored
}

}  // namespace
