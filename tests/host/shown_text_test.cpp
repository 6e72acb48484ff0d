// How values and failures are told to people.
#include <gtest/gtest.h>

#include "tests/host/items.h"
#include "tests/support/comma_locale.h"
#include "tools/host/system/json_writer.h"
#include "tools/host/system/plain_text.h"
#include "tools/host/values/shown_value.h"

namespace kova_host {
namespace {

TEST(ShownText, ControlCharactersCannotSteerATerminal) {
  EXPECT_EQ(printable("a\x1b\x7f\n~ \x1f"), "a\\x1b\\x7f\\x0a~ \\x1f");
  EXPECT_EQ(printable("\xc2\x9b°\xc2\x80\xc2\x9f\xc2\xa0\xc3\x80\xc2"),
            "\\x9b°\\x80\\x9f\xc2\xa0\xc3\x80\\xc2");
  // What turns or breaks a line; neighbours that do not; what is no UTF-8, overlong forms too.
  EXPECT_EQ(printable("\u202a\u202e\u2066\u2069\u200e\u200f\u061c\u2028"),
            "\\u202a\\u202e\\u2066\\u2069\\u200e\\u200f\\u061c\\u2028");
  EXPECT_EQ(printable("\u200d\u2010\u2027\u202f\u2065\u206a€😀"),
            "\u200d\u2010\u2027\u202f\u2065\u206a€😀");
  EXPECT_EQ(printable("\x9b\xc1\x9b\xe0\x82\x9b\xff\xe2\x80"),
            "\\x9b\\xc1\\x9b\\xe0\\x82\\x9b\\xff\\xe2\\x80");
  EXPECT_EQ(field_text(" a b\t  "), " a b\\x09");
  EXPECT_EQ(field_text("   "), "");
}

TEST(ShownText, JsonIsEscapedAndMeansTheSame) {
  const std::string text = "a\x1b\x7f\u009b°\u202e€\u2069\"";
  const JsonPtr array = own(json_pack("[s]", text.c_str()));
  const std::string json = json_document(array.get(), JsonLayout::one_line);
  EXPECT_EQ(json, "[\"a\\u001B\\u007F\\u009B°\\u202E€\\u2069\\\"\"]\n");
  const JsonPtr again(json_loads(json.c_str(), 0, nullptr));
  EXPECT_EQ(json_string_value(json_array_get(again.get(), 0)), text);
}

TEST(ShownText, ColumnsAreCodePoints) {
  EXPECT_EQ(padded("°C", 4) + padded("°C€", 3) + padded("°C€", 1), "°C  °C€°C€");
  const std::tuple<const char*, const char*, const char*> cases[] = {
      // In so many columns as the numbers of these texts are, from none on.
      {"abc", "; ~; a~; abc; abc; ", "; ~; ~c; abc; abc; "},
      {"°C€C°", "; ~; °~; °C~; °C€~; °C€C°; ", "; ~; ~°; ~C°; ~€C°; °C€C°; "},
      {"", "; ; ", "; ; "},
  };
  for (const auto& [text, beginnings, ends] : cases) {
    std::string beginning;
    std::string end;
    for (size_t width = 0; beginning.size() < std::string_view(beginnings).size(); ++width) {
      beginning += shortened(text, width) + "; ";
      end += shortened_in_front(text, width) + "; ";
    }
    EXPECT_EQ(beginning, beginnings);
    EXPECT_EQ(end, ends);
  }
}

TEST(ShownText, RealsAreShortInTablesAndExactInJson) {
  const CommaLocale comma;
  EXPECT_EQ(short_number(1234567890.12345), "1234567890.12");
  EXPECT_EQ(plain_value(good(1234567890.12345)), "1234567890.12345");
  EXPECT_EQ(plain_value(good(0.1 + 0.2)), "0.3");
  const JsonPtr json = own(json_pack("[f,f,f,i,s,{},[],b,n]", 36.85, 12.0, 1e22, -1, "\"\n", 1));
  EXPECT_EQ(json_document(json.get(), JsonLayout::one_line),
            "[36.85,12.0,1e22,-1,\"\\\"\\n\",{},[],true,null]\n");
  const JsonPtr nested = own(json_pack("{s:[f]}", "a", 1234567890.12345));
  EXPECT_EQ(json_document(nested.get(), JsonLayout::indented),
            "{\n  \"a\": [\n    1234567890.12345\n  ]\n}\n");
}

TEST(ShownText, ValuesWithWhatBelongsToThem) {
  using enum ValueKind;
  const Item volts = item_of(1, Role::reading, real, "V");
  const Item plain = item_of(1, Role::reading, real);
  const Item choice = item_of(1, Role::setting, integer, "sec(s)", "1=Fast\x07");
  const Item minutes = item_of(1, Role::reading, text, "min");
  Item missing = volts;
  missing.missing = true;
  const std::tuple<Item, Reading, const char*> cases[] = {
      {volts, good(12.100000000000001), "12.1 V"},
      {plain, good(0.5), "0.5"},
      {choice, good(int64_t{1}), "1 (Fast\\x07)"},
      {choice, good(int64_t{-1234567}), "-1234567 sec(s)"},
      {minutes, good("2 h 5 m"), "2 h 5 m"},  // bears its own units
      {minutes, good("3200"), "3200 min"},
      {minutes, kAbsent, "N/A"},
      {plain, good("a\n"), "a\\x0a"},
      {volts, failed(5), "unreadable: the device did not answer (0x5)"},
      {missing, failed(5), "missing: the device did not answer (0x5)"},
      {missing, failed(0), "missing: this machine does not have it"},
  };
  for (const auto& [item, reading, shown] : cases) {
    EXPECT_EQ(value_with_unit(item, reading), shown);
  }
}

}  // namespace
}  // namespace kova_host
