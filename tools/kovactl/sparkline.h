// A row of small bars that shows where a value has been.
#pragma once

#include <deque>
#include <optional>
#include <string>

namespace kovactl {

// One bar a value, oldest first, scaled from the least to the greatest of them; a steady value
// stays at the foot, and a gap is a blank. Without `utf8` the bars are ASCII.
std::string sparkline(const std::deque<std::optional<double>>& values, bool utf8);

}  // namespace kovactl
