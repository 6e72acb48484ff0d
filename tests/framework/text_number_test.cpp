// Conversions between numbers and texts, under the classic locale and under one with commas.
#include "framework/text_number.h"

#include <gtest/gtest.h>

#include <bit>
#include <climits>
#include <cmath>
#include <cstdint>
#include <limits>

#include "tests/support/comma_locale.h"

namespace {

constexpr struct {
  const char* text;
  double real;
  int integer;
} kReadings[] = {
    {"36.85", 36.85, 36},
    {"-200", -200, -200},
    {"+5", 5, 5},
    {" \t\n12 V", 12, 12},
    {"1.5e3", 1500, 1},
    {"-2147483649", -2147483649.0, INT_MAX},
    {"99999999999999999999", 1e20, -1},  // clamped to 2^63 - 1
    {"-99999999999999999999", -1e20, 0},
    {"36,85", 36, 36},
    {"36,85.5", 36, 36},
    {"0x1.8p1", 3, 0},
    {"0X10", 16, 0},
    {"1e400", HUGE_VAL, 1},
    {"-1e400", -HUGE_VAL, -1},
    {"4.9e-324", std::numeric_limits<double>::denorm_min(), 4},
    {"1e-400", 0, 1},
    {"inf", HUGE_VAL, 0},
    {"-infinity", -HUGE_VAL, 0},
    {"1.234.567", 1.234, 1},
    // no number
    {"", 0, 0},
    {" +", 0, 0},
    {"+-5", 0, 0},
    {"N/A", 0, 0},
};

// Among them the last ones beside a number of three decimals whose text is that number's, and the
// first ones whose text is not.
constexpr double kReals[] = {0.0,
                             -0.0,
                             36.849999999999966,
                             -0.05,
                             999.999,
                             -999.999,
                             999.9999999,
                             1000.0009,
                             1000.0009999999999,
                             123456.7,
                             0.0009999996,
                             0.0009999994,
                             0.001000004,
                             0.001000006,
                             0.0099999996,
                             0.0005,
                             1e-9,
                             1.0000001,
                             1.000004,
                             1.000006,
                             1e300,
                             std::numeric_limits<double>::denorm_min(),
                             std::numeric_limits<double>::infinity(),
                             std::numeric_limits<double>::quiet_NaN()};

void expect_conversions() {
  EXPECT_EQ(To_String(4294967295U), "4294967295");
  EXPECT_EQ(To_String(short{-32768}), "-32768");
  const std::pair<double, const char*> reals[] = {
      {1.2, "1.2"},       {4800.0, "4800"},
      {-0.05, "-0.05"},   {1234567, "1.23457e+06"},
      {0.00001, "1e-05"}, {31000 / 100.0 - 273.15, "36.85"}};
  for (const auto& [value, text] : reals) {
    EXPECT_EQ(To_String(value), text);
  }
  for (const double value : kReals) {
    const double read_back = real_from_text(To_String(value));
    EXPECT_EQ(std::bit_cast<std::uint64_t>(to_six_digits(value)),
              std::bit_cast<std::uint64_t>(read_back))
        << To_String(value);
  }
  for (const auto& reading : kReadings) {
    EXPECT_EQ(real_from_text(reading.text), reading.real) << '"' << reading.text << '"';
    EXPECT_EQ(integer_from_text(reading.text), reading.integer) << '"' << reading.text << '"';
  }
  EXPECT_TRUE(std::isnan(real_from_text("nAn")));
}

TEST(TextNumber, ConvertsInTheClassicLocale) {
  expect_conversions();
}

TEST(TextNumber, ConvertsAlikeUnderADecimalCommaLocale) {
  const CommaLocale locale;
  expect_conversions();
}

}  // namespace
