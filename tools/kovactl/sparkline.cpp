// A row of small bars that shows where a value has been.
#include "tools/kovactl/sparkline.h"

#include <algorithm>
#include <array>
#include <limits>

namespace kovactl {

namespace {

constexpr size_t kLevels = 8;
constexpr std::array<const char*, kLevels> kBlocks = {"▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
constexpr std::array<const char*, kLevels> kAscii = {"_", ".", "-", "~", "=", "+", "*", "#"};

size_t level_of(double value, double least, double greatest) {
  // Divided before subtracting, so that no span overflows.
  const double span = greatest / 2 - least / 2;
  if (span <= 0) {
    return 0;
  }
  const double share = (value / 2 - least / 2) / span;
  return std::min(kLevels - 1, static_cast<size_t>(share * kLevels));
}

}  // namespace

std::string sparkline(const std::deque<std::optional<double>>& values, bool utf8) {
  double least = std::numeric_limits<double>::max();
  double greatest = std::numeric_limits<double>::lowest();
  for (const auto& value : values) {
    least = std::min(least, value.value_or(least));
    greatest = std::max(greatest, value.value_or(greatest));
  }
  const auto& bars = utf8 ? kBlocks : kAscii;
  std::string text;
  for (const auto& value : values) {
    text += value ? bars.at(level_of(*value, least, greatest)) : " ";
  }
  return text;
}

}  // namespace kovactl
