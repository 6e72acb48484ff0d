// Elements of the items of a family with maps.
#include "framework/item.h"

#include <gtest/gtest.h>

#include "framework/json_owner.h"

namespace {

using catalogue::Kind;
using catalogue::Role;
using catalogue::Row;

constexpr unsigned int kId = 0x14160801;

std::string json_text(const json_t* value) {
  char* text = json_dumps(value, JSON_ENCODE_ANY | JSON_COMPACT);
  std::string copy = text != nullptr ? text : "nothing";
  free(text);
  return copy;
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
