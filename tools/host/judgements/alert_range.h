// Ranges that raise an alert, in the syntax of the Monitoring Plugins guidelines.
#pragma once

#include <limits>
#include <optional>
#include <string>
#include <string_view>

namespace kova_host {

// A range of good values, both ends included; a value outside raises the alert. With "@" in front
// it is the other way round.
//
//   "10"     below 0 or above 10          "10:"    below 10
//   "~:10"   above 10                     "10:20"  below 10 or above 20
//   "@10:20" from 10 to 20
struct AlertRange {
  double start = 0;
  double end = std::numeric_limits<double>::infinity();
  bool inside = false;  // alerts from start to end, both included
  std::string text;     // as typed: performance data repeats it

  bool alerts(double value) const;
};

// Nothing for a text that is no range, or whose start lies above its end.
std::optional<AlertRange> parse_alert_range(std::string_view text);

}  // namespace kova_host
