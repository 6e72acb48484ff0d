// What people type: item IDs, numbers, options, quantities, durations, alert ranges, near words.
#include <gtest/gtest.h>

#include "tests/support/comma_locale.h"
#include "tools/host/judgements/alert_range.h"
#include "tools/host/model/name_pattern.h"
#include "tools/host/system/duration.h"
#include "tools/host/system/nearest.h"
#include "tools/host/system/typed_number.h"
#include "tools/host/values/typed_quantity.h"
#include "tools/host/values/typed_value.h"

namespace kova_host {
namespace {

// Each result with the texts that it is to come from.
template <typename Result>
using Cases = std::vector<std::pair<Result, std::vector<std::string>>>;

template <typename Result, typename Parse>
void expect_parsed(Parse parse, const Cases<Result>& cases) {
  for (const auto& [result, texts] : cases) {
    for (const std::string& text : texts) {
      EXPECT_EQ(parse(text), result) << text;
    }
  }
}

TEST(TypedText, ItemIds) {
  expect_parsed<std::optional<uint32_t>>(
      parse_item_id, {{0x14140B01, {"0x14140B01", "0X14140b01", "336857857"}},
                      {0xFFFFFFFF, {"0xFFFFFFFF", "4294967295"}},
                      {0, {"0"}},
                      {{},
                       {"", "0x", "-1", "+1", " 1", "1 ", "0x-1", "0x+1", "1.0", "0x100000000",
                        "4294967296", "14140B01", "0x0x1", "1,000", "0b1"}}});
}

TEST(TypedText, NumbersKeepTheirKindAndKnowNoLocale) {
  const CommaLocale comma;
  expect_parsed<std::optional<Number>>(
      parse_number, {{int64_t{16}, {"16", "0x10", "0X10"}},
                     {int64_t{-3}, {"-3"}},
                     {INT64_MAX, {"9223372036854775807", "0x7FFFFFFFFFFFFFFF"}},
                     {1000.0, {"1e3", "1000.0"}},
                     {-0.5, {"-.5", "-0.5"}},
                     {9223372036854775808.0, {"9223372036854775808"}},
                     {{},
                      {"", "-", "+1", "0,25", "1e", "1e999", "inf", "nan", "0x", "-0x1", "1 ",
                       "12V", "0x8000000000000000", "1.2.3"}}});
}

TEST(TypedText, OptionLists) {
  std::string seen;
  for (const Option& option :
       parse_options("0=0.098Hz|1=0.195Hz|\n5=a=b|-2=-2~+2G|x=bad||6|0x7=| \t8 = a b\r\n|=")) {
    seen += std::to_string(option.value) + ":" + option.label + ";";
  }
  EXPECT_EQ(seen, "0:0.098Hz;1:0.195Hz;5:a=b;-2:-2~+2G;8:a b;");
}

TEST(TypedText, WordsAreTheSameInAnyCaseOfTheirLetters) {
  EXPECT_TRUE(same_word("aBYz", "AbyZ"));
  for (const auto& [a, b] : {std::pair("@", "`"), {"[", "{"}, {"a", "aa"}, {"aa", "a"}}) {
    EXPECT_FALSE(same_word(a, b));
  }
}

TEST(TypedText, PatternsKnowTwoWildcards) {
  const std::string name = "PoE 1 caf\xc3\xa9 [a]";
  expect_parsed<bool>([&](const std::string& pattern) { return matches_pattern(pattern, name); },
                      {{true,
                        {name, "*", "**", "p*", "*]", "poe ? CAF? [a]", "*1*f*", "*a*a*", "*[a]",
                         "?????????????*", "*?????????????", "PoE 1 ca*[*]", "*poe*"}},
                       {false,
                        {"", "?", "PoE", "PoE 2*", "*b*", "PoE [1] *", "*[!b]", "???????????????",
                         "*a*a*a*", "\\PoE*", "*]?", "PoE 1 caf?[a]"}}});
  EXPECT_TRUE(matches_pattern("*", "") && matches_pattern("", ""));
  // A name that is one letter over and over asks for as many steps as there are.
  std::string stars;
  for (int i = 0; i < 63; ++i) {
    stars += "*a";
  }
  EXPECT_FALSE(matches_pattern(stars + "b", std::string(100'000, 'a')));
}

TEST(TypedText, QuantitiesInAnyUnitOfTheSameKind) {
  const auto in = [](const char* unit) {
    return [unit](const std::string& text) {
      const auto typed = parse_quantity(text);
      const auto number = typed ? in_unit(*typed, unit) : std::nullopt;
      return number ? std::optional(as_double(*number)) : std::nullopt;
    };
  };
  using Values = std::optional<double>;
  expect_parsed<Values>(in("sec(s)"), {{7200,
                                        {"7200", "7200s", "7200 sec ", "7200secs", "7200 second",
                                         "7200seconds", "7200 SEC(S)", "7200000ms", "120 min",
                                         "120minute", "120 minutes", "2h", "2 hour", "2.0 hours"}},
                                       {{}, {"", " ", "s", "s 3", "3q", "3V"}}});
  expect_parsed<Values>(in("time(s)"), {{3, {"3", "3x", "3 time", "3times", " 3 ", "0x3"}}});
  expect_parsed<Values>(
      in("V"), {{-10.5, {"-10.5V", "-10.5 volt", "-10.5volts", "-10500mV", "-10500 millivolts"}}});
  expect_parsed<Values>(in("G"), {{0.25, {"0.25g", "250mG", "2.5e2 milli-G"}}});
  EXPECT_EQ(in_unit(parse_quantity("3x").value(), "time(s)"), Number(int64_t{3}));
}

TEST(TypedText, Durations) {
  using std::chrono::milliseconds;
  expect_parsed<milliseconds>(
      [](const std::string& text) { return parse_duration(text).value_or(milliseconds(-1)); },
      {{milliseconds(90000), {"90", "90s", "1.5m", "1.5min", "1m30sec", "90000ms", "0.025h"}},
       {milliseconds(0), {"0", "0d"}},
       {milliseconds(90061002), {"1d1h1m1s1.5ms"}},
       {milliseconds(365LL * 86400000), {"365d", "364d23.999h3.6s"}},
       {milliseconds(-1),
        {"", "365d1ms", "1m1h", "1m1m", "1h30", "-1", "1x", "s", "1e3", "inf", "nan", "1 s",
         "1ms1s"}}});
  std::string told;
  for (const int time : {0, 499, 500, 60000, 3599499, 3600000, 5405000, 108000000}) {
    told += duration_text(milliseconds(time)) + "; ";
  }
  EXPECT_EQ(told, "0 s; 0 s; 1 s; 1 min; 59 min 59 s; 1 h; 1 h 30 min 5 s; 30 h; ");
}

TEST(TypedText, AlertRanges) {
  // Values that are good, and values that raise the alert.
  const std::tuple<const char*, std::vector<double>, std::vector<double>> cases[] = {
      {"10", {0, 10}, {-0.1, 10.1}},         {"10:", {10, 1e300}, {9.9, -11}},
      {"~:10", {-1e300, 10}, {10.1}},        {"10:20", {10, 20}, {9.9, 20.1}},
      {"@10:20", {9.9, 20.1}, {10, 15, 20}}, {"5:5", {5}, {4.9, 5.1}},
      {"@~:0x10", {16.5}, {-1e300, 16}},     {"-2.5:-1", {-2.5, -1}, {-3, 0}},
  };
  for (const auto& [text, good, bad] : cases) {
    const auto range = parse_alert_range(text).value();
    EXPECT_EQ(range.text, text);
    EXPECT_TRUE(std::none_of(good.begin(), good.end(), [&](double v) { return range.alerts(v); }));
    EXPECT_TRUE(std::all_of(bad.begin(), bad.end(), [&](double v) { return range.alerts(v); }));
  }
  for (const char* text : {"", "@", ":", "~", "20:10", "-1", "x:10", "10:x", "1:2:3", "1:~"}) {
    EXPECT_FALSE(parse_alert_range(text)) << text;
  }
}

TEST(TypedText, NearWordsAreSlipsOfThePenOnly) {
  const std::string a(128, 'a');
  const std::vector<std::string> words = {"list", "lisp", "watch", "set", "window", a + 'b'};
  expect_parsed<std::string>(
      [&](const std::string& text) { return nearest(text, words); },
      {{"list", {"lsit", "lst", "lis", "LISST"}},
       {"watch", {"WATHC"}},
       {"set", {"ste", "est", "seta", "aset", "st", "sat"}},
       {"window", {"iwndwo", "iwnodw", "windowed", "windows98", "xxndow", "wndow"}},
       {a + 'b', {a}},
       {"",
        {"", "x", "wndw", "metrics", "tes", "sxy", "iwdnwo", "win", "windows987", "xxxdow",
         a + 'a'}}});
  EXPECT_EQ(suggestion("lisst", words), ": did you mean 'list'?");
  EXPECT_EQ(suggestion("metrics", words), "");
}

}  // namespace
}  // namespace kova_host
