// The verdict of a monitoring check over a machine's readings, and how it is told: one status line,
// a line for each finding, and performance data, by the Monitoring Plugins guidelines.
#pragma once

#include <string>
#include <vector>

#include "tools/host/judgements/judge.h"

namespace kova_host {

// In the order of the plugins' exit codes.
enum class CheckState { ok = 0, warning = 1, critical = 2, unknown = 3 };

struct CheckResult {
  CheckState state = CheckState::ok;
  std::string text;  // whole lines, ready to print
};

// Tells the findings of judge() on `items`, each ID of which stands there once. Performance data
// bear paths, which stay the same whatever else the machine has.
CheckResult check_readings(const std::vector<Item>& items, const Readings& readings,
                           const std::vector<Finding>& findings, const Thresholds& thresholds);

// When there is nothing to judge: why, in one line.
CheckResult check_unknown(const std::string& reason);

}  // namespace kova_host
