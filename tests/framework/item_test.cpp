// Items of every kind, and of none: elements, published values and written words.
#include "framework/item.h"

#include <gtest/gtest.h>

#include "framework/json_owner.h"

namespace {

using catalogue::Kind;
using catalogue::Role;
using catalogue::Row;
using catalogue::Shape;

constexpr unsigned int kId = 0x14160801;

std::string json_text(const json_t* value) {
  char* text = json_dumps(value, JSON_ENCODE_ANY | JSON_COMPACT);
  std::string copy = text != nullptr ? text : "nothing";
  free(text);
  return copy;
}

TEST(Item, EachKindHasItsElementValueAndWord) {
  const struct {
    Shape as;
    const char *element, *published;
    std::uint32_t word;  // of a written 3
  } cases[] = {
      {{.role = Role::kReading, .kind = Kind::kReal, .scale = 0.5}, "\"v\":129.5", "-1", 6},
      {{.kind = Kind::kInteger}, "\"v\":259", "259", 3},
      {{.kind = Kind::kInteger, .word = catalogue::Word::kLowByteInDocument}, "\"v\":3", "259", 3},
      {{.kind = Kind::kInteger, .scale = 0.1, .truncated = true}, "\"v\":25", "25", 3},
      {{.kind = Kind::kSwitch}, "\"bv\":1", "259", 1},
      {{.kind = Kind::kSwitch, .normalised = true}, "\"bv\":1", "1", 1},
      {{.kind = Kind::kText}, nullptr, "-1", 0},
      {{.kind = Kind::kNone}, nullptr, "-1", 0},
  };
  for (const auto& [as, element, published, word] : cases) {
    SCOPED_TRACE(published);
    json_t* made = nullptr;
    const Status status =
        catalogue::create_first_keys({.id = kId, .as = as}, "Item", kId, 259, &made);
    const JsonOwner owner(made);
    EXPECT_EQ(status, element != nullptr ? IOT_STATUS_SUCCESS : IOT_STATUS_JSON_ERROR);
    EXPECT_NE(json_text(made).find(element != nullptr ? element : "nothing"), std::string::npos);
    const JsonOwner value(json_integer(-1));
    catalogue::publish(as, 259, value.get());
    EXPECT_EQ(json_text(value.get()), published);
    const JsonOwner written(json_integer(3));
    EXPECT_EQ(catalogue::word_of(as, written.get()), word);
  }
}

TEST(Item, AnElementNeedsItsRow) {
  StringMap names;
  const StringMap units{{kId, "V"}};
  const StringMap options;
  const RangeMap bounds{{kId, {{MIN, 1.0}, {MAX, 2.0}}}};
  const catalogue::ElementMaps maps{names, units, options, bounds};
  json_t* made = nullptr;
  EXPECT_EQ(catalogue::create_element(maps, nullptr, kId, nullptr, &made), IOT_STATUS_JSON_ERROR);
  EXPECT_EQ(made, nullptr);
  EXPECT_TRUE(names.contains(kId));  // which gains an empty one
  const std::string text = "12V";
  const Row row{.id = kId, .as = {.role = Role::kState, .kind = Kind::kText}};
  EXPECT_EQ(catalogue::create_element(maps, &row, kId, &text, &made), IOT_STATUS_SUCCESS);
  const JsonOwner owner(made);
  EXPECT_EQ(json_text(made), R"({"n":"","id":336988161,"sv":"12V","asm":"r","ui":"label",)"
                             R"("min":1.0,"max":2.0,"u":"V"})");
}

}  // namespace
