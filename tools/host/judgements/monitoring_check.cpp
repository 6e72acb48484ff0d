// Findings in the plugins' output format.
#include "tools/host/judgements/monitoring_check.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "tools/host/system/plain_text.h"
#include "tools/host/values/shown_value.h"
#include "tools/host/values/units.h"

namespace kova_host {
namespace {

// A bar would begin the performance data, a line feed end the status line.
std::string status_text(std::string_view text) {
  std::string safe = printable(text);
  std::replace(safe.begin(), safe.end(), '|', '/');
  return safe;
}

std::string_view performance_unit(const Item& item) {
  const Unit* unit = find_unit(item.unit);
  return unit == nullptr ? "" : unit->check;
}

std::string performance_label(const Item& item) {
  std::string label = "'";
  for (const char c : status_text(label_of(item))) {
    label += c == '\'' ? "''" : std::string(1, c == '=' ? '-' : c);
  }
  return label + '\'';
}

// 'TRK-7000/Temperatures/TRK7K VTIN 1'=41;;;0;100
std::string performance_datum(const Item& item, const Reading& reading,
                              const Thresholds& thresholds) {
  const auto range = [&](const auto& map) {
    const auto limit = map.find(item.id);
    return limit != map.end() ? limit->second.text : "";
  };
  const auto end = [](const std::optional<double>& value) {
    return value ? short_number(*value) : "";
  };
  std::string datum = fmt::format(
      "{}={}{};{};{};{};{}", performance_label(item), plain_value(reading), performance_unit(item),
      range(thresholds.warning), range(thresholds.critical), end(item.min), end(item.max));
  datum.erase(datum.find_last_not_of(';') + 1);
  return datum;
}

// Settings and what the machine is made of do not move by themselves: no curve to draw.
bool is_measured(const Item& item) {
  return item.facts.role == Role::reading || item.facts.role == Role::state ||
         item.facts.role == Role::unknown;
}

CheckState state_of(Severity severity) {
  return severity == Severity::critical  ? CheckState::critical
         : severity == Severity::warning ? CheckState::warning
                                         : CheckState::unknown;
}

std::string_view state_name(CheckState state) {
  constexpr std::array<std::string_view, 4> kNames = {"OK", "WARNING", "CRITICAL", "UNKNOWN"};
  return kNames.at(static_cast<size_t>(state));
}

// What is worst first, and in the status line as far as a pager shows it.
std::string summary(const std::vector<Finding>& findings, size_t items) {
  if (findings.empty()) {
    return fmt::format("{} items read", items);
  }
  constexpr size_t kNamed = 3;
  std::string text;
  for (size_t i = 0; i < std::min(findings.size(), kNamed); ++i) {
    text += (i == 0 ? "" : ", ") + findings[i].sentence();
  }
  return findings.size() > kNamed ? fmt::format("{} and {} more", text, findings.size() - kNamed)
                                  : text;
}

}  // namespace

CheckResult check_readings(const std::vector<Item>& items, const Readings& readings,
                           const std::vector<Finding>& findings, const Thresholds& thresholds) {
  std::string performance;
  for (const Item& item : items) {
    const Reading& reading = readings.at(item.id);
    if (reading.number() && is_measured(item)) {
      performance += ' ' + performance_datum(item, reading, thresholds);
    }
  }
  CheckResult result;
  result.state = findings.empty() ? CheckState::ok : state_of(findings.front().severity);
  result.text = fmt::format("KOVA {} - {}", state_name(result.state),
                            status_text(summary(findings, items.size())));
  result.text += performance.empty() ? "\n" : " |" + performance + "\n";
  for (const Finding& finding : findings) {
    result.text += fmt::format("{}: {}\n", state_name(state_of(finding.severity)),
                               status_text(finding.sentence()));
  }
  return result;
}

CheckResult check_unknown(const std::string& reason) {
  return {CheckState::unknown,
          fmt::format("KOVA {} - {}\n", state_name(CheckState::unknown), status_text(reason))};
}

}  // namespace kova_host
