// What people type, and how numbers are shown.
#include "tools/host/text_value.h"

#include <gtest/gtest.h>

#include "tests/support/comma_locale.h"
#include "tools/host/errors.h"
#include "tools/host/item.h"
#include "tools/host/json_writer.h"
#include "tools/host/plain_text.h"
#include "tools/host/value_text.h"
#include "tools/host/write_value.h"
#include "tools/kovactl/sparkline.h"

namespace kovactl {

using namespace kova_host;
namespace {

TEST(TextValue, ItemIds) {
  const std::pair<const char*, uint32_t> accepted[] = {
      {"0x14140B01", 0x14140B01}, {"0X14140b01", 0x14140B01}, {"336857857", 0x14140B01},
      {"0xFFFFFFFF", 0xFFFFFFFF}, {"4294967295", 0xFFFFFFFF}, {"0", 0},
  };
  for (const auto& [text, id] : accepted) {
    EXPECT_EQ(parse_item_id(text), id) << text;
  }
  for (const char* text : {"", "0x", "-1", "+1", " 1", "1 ", "0x-1", "0x+1", "1.0", "0x100000000",
                           "4294967296", "14140B01", "0x0x1", "1,000", "0b1"}) {
    EXPECT_EQ(parse_item_id(text), std::nullopt) << text;
  }
}

TEST(TextValue, NumbersKeepTheirKindAndKnowNoLocale) {
  const CommaLocale comma;
  const std::pair<const char*, Number> accepted[] = {
      {"12", int64_t{12}},   {"-3", int64_t{-3}},
      {"0x10", int64_t{16}}, {"9223372036854775807", INT64_MAX},
      {"0.25", 0.25},        {"-.5", -0.5},
      {"1e3", 1000.0},       {"9223372036854775808", 9223372036854775808.0},
      {"12.0", 12.0},
  };
  for (const auto& [text, number] : accepted) {
    EXPECT_EQ(parse_number(text), number) << text;
  }
  for (const char* text : {"", "-", "+1", "0,25", "1e", "1e999", "inf", "nan", "0x", "-0x1", "1 ",
                           "12V", "0xFFFFFFFFFFFFFFFF", "1.2.3"}) {
    EXPECT_EQ(parse_number(text), std::nullopt) << text;
  }
}

TEST(TextValue, OptionLists) {
  std::string seen;
  for (const Option& option :
       parse_options("0=0.098Hz|1=0.195Hz|\n5=a=b|-2=-2~+2G|x=bad||6|0x7=")) {
    seen += std::to_string(option.value) + ":" + option.label + ";";
  }
  EXPECT_EQ(seen, "0:0.098Hz;1:0.195Hz;5:a=b;-2:-2~+2G;");
}

Item item_of(std::optional<ValueKind> kind, std::string_view options = "") {
  Item item;
  item.kind = kind;
  item.options = parse_options(options);
  return item;
}

// What is sent for `text`; nothing if it is refused as a usage error.
std::optional<Number> sent(const Item& item, const char* text) {
  try {
    return value_to_set(item, text);
  } catch (const HostError& error) {
    EXPECT_EQ(error.fault(), Fault::usage) << text;
    return std::nullopt;
  }
}

TEST(SetValue, SendsWhatTheItemTakesAndNothingElse) {
  using enum ValueKind;
  const std::tuple<Item, const char*, std::optional<Number>> cases[] = {
      {item_of(integer, "0=Auto|1=12V|2=24V"), "24v", int64_t{2}},
      {item_of(integer, "0=on|1=ON"), "ON", int64_t{1}},  // the exact word wins
      {item_of(integer, "0=on|1=ON"), "oN", std::nullopt},
      {item_of(integer, "3=1"), "1", int64_t{1}},  // a number is a number
      {item_of(integer, "0=Auto"), "", std::nullopt},
      {item_of(integer), "5.0", int64_t{5}},
      {item_of(integer), "2.5", std::nullopt},
      {item_of(integer), "4294967295", int64_t{4294967295}},
      {item_of(integer), "4294967296", std::nullopt},
      {item_of(integer), "1e10", std::nullopt},
      {item_of(integer), "-2147483648", int64_t{-2147483648}},
      {item_of(integer), "-2147483649.0", std::nullopt},
      {item_of(boolean), "Enable", int64_t{1}},
      {item_of(boolean), "off", int64_t{0}},
      {item_of(boolean), "0.5", std::nullopt},
      {item_of(boolean, "0=standby|1=measurement"), "on", std::nullopt},
      {item_of(real), "11", int64_t{11}},
      {item_of(real), "11.0", 11.0},
      {item_of(real), "on", std::nullopt},
      {item_of(std::nullopt), "11.5", 11.5},
  };
  for (const auto& [item, text, number] : cases) {
    EXPECT_EQ(sent(item, text), number) << text;
  }
}

TEST(Output, RealsAreShortInTablesAndExactInJson) {
  const CommaLocale comma;
  Reading reading{Reading::State::good, 0, 12.100000000000001};
  Item item = item_of(ValueKind::real);
  item.unit = "V";
  item.max = 12.1;
  EXPECT_EQ(value_with_unit(item, reading), "12.1 V");
  EXPECT_FALSE(out_of_range(item, reading));  // rounding alone
  EXPECT_TRUE(out_of_range(item, {Reading::State::good, 0, 12.2}));

  const JsonPtr json = own(json_pack("[f,f,f,i,s,{},[],b,n]", 36.85, 12.0, 1e22, -1, "\"\n", 1));
  EXPECT_EQ(json_document(json.get(), JsonLayout::one_line),
            "[36.85,12.0,1e22,-1,\"\\\"\\n\",{},[],true,null]\n");
}

TEST(Output, UnitsFollowTextsThatAreNumbersOnly) {
  Item item = item_of(ValueKind::text);
  item.unit = "min";
  EXPECT_EQ(value_with_unit(item, {Reading::State::good, 0, std::string("2 h 5 m")}), "2 h 5 m");
  EXPECT_EQ(value_with_unit(item, {Reading::State::good, 0, std::string("3200")}), "3200 min");
  EXPECT_EQ(value_with_unit(item, {Reading::State::absent, 0, {}}), "N/A");
}

TEST(Output, Sparklines) {
  using Values = std::deque<std::optional<double>>;
  EXPECT_EQ(sparkline({}, true), "");
  EXPECT_EQ(sparkline(Values{5, 5}, true), "▁▁");
  EXPECT_EQ(sparkline(Values{0, 7, std::nullopt, 3.5}, true), "▁█ ▅");
  EXPECT_EQ(sparkline(Values{-1e308, 1e308}, false), "_#");
}

TEST(Output, ControlCharactersAreShownAndColumnsCounted) {
  EXPECT_EQ(printable("a\x1b\x7f\n\xc2\x9b°"), "a\\x1b\\x7f\\x0a\\x9b°");
  EXPECT_EQ(padded("°C", 4), "°C  ");
}

}  // namespace
}  // namespace kovactl
