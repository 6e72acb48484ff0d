// The verdict of a monitoring check over a machine's readings, and how it is told: one status line,
// a line for each finding, and performance data, by the Monitoring Plugins guidelines.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "tools/host/judgements/alert_range.h"
#include "tools/host/values/reading.h"

namespace kova_host {

// In the order of the plugins' exit codes.
enum class CheckState { ok = 0, warning = 1, critical = 2, unknown = 3 };

// What raises an alert, by item ID.
struct CheckLimits {
  std::map<uint32_t, AlertRange> warning;
  std::map<uint32_t, AlertRange> critical;
};

struct CheckResult {
  CheckState state = CheckState::ok;
  std::string text;  // whole lines, ready to print
};

// Judges `items`, each ID of which stands there once. Critical: an item that cannot be read or is
// missing, a value that a critical limit is for. Warning: a value that a warning limit is for, or
// beyond the item's published range when the item has no limit of its own.
CheckResult check_readings(const std::vector<Item>& items, const Readings& readings,
                           const CheckLimits& limits);

// When there is nothing to judge: why, in one line.
CheckResult check_unknown(const std::string& reason);

}  // namespace kova_host
