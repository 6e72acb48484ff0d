// Numbers of the memory modules and of the battery, which are read without their texts.
#include "framework/text_item.h"

#include <gtest/gtest.h>

#include "devices/sbattery/sbattery_items.h"
#include "devices/sdram/sdram_items.h"
#include "framework/json_owner.h"
#include "framework/text_number.h"

namespace {

std::uint32_t device_word = 0;

constexpr WordReader kDevice{.get_func = [](std::uint32_t /*code*/, std::uint32_t* word) {
  *word = device_word;
  return IOT_STATUS_SUCCESS;
}};

// All words below `from`, then ever fewer of those above.
std::uint32_t next_word(std::uint32_t word, std::uint32_t from) {
  return word < from ? word + 1 : word + word / 256;
}

bool reads_as_its_text(const text_item::Family& family, const catalogue::Row& row, json_t* value) {
  std::string text;
  if (text_item::read_text(family, kDevice, row.id, text) != IOT_STATUS_SUCCESS ||
      text_item::read_value(family, kDevice, row.id, value) != IOT_STATUS_SUCCESS) {
    return false;
  }
  return row.as.kind == catalogue::Kind::kReal
             ? json_real_value(value) == real_from_text(text)
             : json_integer_value(value) == integer_from_text(text);
}

void expect_numbers_as_their_texts(const text_item::Family& family) {
  for (const catalogue::Row& row : family.sheet.rows) {
    if (row.as.kind == catalogue::Kind::kText) {
      continue;
    }
    const bool is_real = row.as.kind == catalogue::Kind::kReal;
    const JsonOwner value(is_real ? json_real(-1e9) : json_integer(-1'000'000'000));
    // Reals have more than six digits only from here.
    const std::uint32_t from = is_real ? 1'050'000 : 65'536;
    device_word = 0;
    for (std::uint32_t before = 0; before <= device_word; device_word = next_word(before, from)) {
      ASSERT_TRUE(reads_as_its_text(family, row, value.get())) << row.name << ' ' << device_word;
      before = device_word;
    }
  }
}

TEST(TextItem, NumbersReadAsTheirTexts) {
  expect_numbers_as_their_texts(sdram::kItems);
  expect_numbers_as_their_texts(sbattery::kItems);
}

}  // namespace
