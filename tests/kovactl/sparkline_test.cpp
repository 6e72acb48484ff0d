// Curves made of characters.
#include "tools/kovactl/sparkline.h"

#include <gtest/gtest.h>

namespace kovactl {
namespace {

TEST(Sparkline, ScalesValuesBetweenTheLeastAndTheGreatest) {
  using Values = std::deque<std::optional<double>>;
  EXPECT_EQ(sparkline({}, true), "");
  EXPECT_EQ(sparkline(Values{5, 5}, true), "▁▁");
  EXPECT_EQ(sparkline(Values{0, 7, std::nullopt, 3.5}, true), "▁█ ▅");
  EXPECT_EQ(sparkline(Values{-1e308, 1e308}, false), "_#");
}

}  // namespace
}  // namespace kovactl
