// Raw words of written JSON numbers, at the boundaries of truncation and of 32 and 64 bits.
#include "framework/written_value.h"

#include <gtest/gtest.h>

#include "framework/json_owner.h"

namespace {

TEST(WrittenValue, RawWords) {
  const struct {
    JsonOwner value;
    std::uint32_t integer, on_off, tenths, ten_thousandths;
    const char* reason;
  } cases[] = {
      {JsonOwner(json_integer(12)), 12, 1, 120, 120000, "an integer"},
      {JsonOwner(json_integer(-3)), 0xFFFFFFFD, 0, 0xFFFFFFE2, 0xFFFF8AD0, "two's complement"},
      {JsonOwner(json_integer(0x100000005)), 5, 1, 50, 50000, "the low 32 bits; the test is on 64"},
      {JsonOwner(json_integer(INT64_MIN)), 0, 0, 0, 0, "the least integer"},
      {JsonOwner(json_integer(500000)), 500000, 1, 5000000, 705032704, "wraps in 32 bits"},
      {JsonOwner(json_real(11.99)), 0, 0, 119, 119900, "truncated"},
      {JsonOwner(json_real(0.25)), 0, 0, 2, 2500, "a quarter"},
      {JsonOwner(json_real(-0.00015)), 0, 0, 0, 0xFFFFFFFF, "toward zero"},
      {JsonOwner(json_real(1e12)), 0, 0, 0x4E72A000, 0x6FC10000, "fits 64 bits, keeps the low 32"},
      {JsonOwner(json_real(1e300)), 0, 0, 0, 0, "fits no integer"},
      {JsonOwner(json_real(-1e300)), 0, 0, 0, 0, "nor here"},
      {JsonOwner(json_real(9.3e17)), 0, 0, 0, 0, "tenths of it just do not fit"},
  };
  for (const auto& [value, integer, on_off, tenths, ten_thousandths, reason] : cases) {
    EXPECT_EQ(integer_word(value.get()), integer) << reason;
    EXPECT_EQ(switch_word(value.get()), on_off) << reason;
    EXPECT_EQ(scaled_word(value.get(), 10), tenths) << reason;
    EXPECT_EQ(scaled_word(value.get(), 10000), ten_thousandths) << reason;
  }
}

}  // namespace
