// Judging readings, and the plugins' output format.
#include "tools/host/judgements/monitoring_check.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "tools/host/system/plain_text.h"
#include "tools/host/values/shown_value.h"

namespace kova_host {
namespace {

struct Finding {
  CheckState state;
  std::string text;
};

// A bar would begin the performance data, a line feed end the status line.
std::string status_text(std::string_view text) {
  std::string safe = printable(text);
  std::replace(safe.begin(), safe.end(), '|', '/');
  return safe;
}

// The guidelines know seconds, per cent and bytes; other units have none.
std::string_view performance_unit(const Item& item) {
  return item.unit == "sec(s)" ? "s" : item.unit == "%" ? "%" : "";
}

std::string performance_label(const Item& item) {
  std::string label = "'";
  for (const char c : status_text(name_or_path(item))) {
    label += c == '\'' ? "''" : std::string(1, c == '=' ? '-' : c);
  }
  return label + '\'';
}

const AlertRange* limit_of(const std::map<uint32_t, AlertRange>& limits, uint32_t id) {
  const auto found = limits.find(id);
  return found == limits.end() ? nullptr : &found->second;
}

// 'TRK7K VTIN 1'=41;;;0;100
std::string performance_datum(const Item& item, const Reading& reading, const CheckLimits& limits) {
  const auto range = [&](const auto& map) {
    const AlertRange* limit = limit_of(map, item.id);
    return limit != nullptr ? limit->text : "";
  };
  const auto end = [](const std::optional<double>& value) {
    return value ? short_number(*value) : "";
  };
  std::string datum = fmt::format(
      "{}={}{};{};{};{};{}", performance_label(item), plain_value(reading), performance_unit(item),
      range(limits.warning), range(limits.critical), end(item.min), end(item.max));
  datum.erase(datum.find_last_not_of(';') + 1);
  return datum;
}

// Settings and what the machine is made of do not move by themselves: no curve to draw.
bool is_measured(const Item& item) {
  return item.facts.role == Role::reading || item.facts.role == Role::state ||
         item.facts.role == Role::unknown;
}

std::optional<Finding> judge(const Item& item, const Reading& reading, const CheckLimits& limits) {
  const auto found = [&](CheckState state, std::string_view why) {
    return Finding{state,
                   fmt::format("{} {}{}", name_or_path(item), value_with_unit(item, reading), why)};
  };
  if (reading.state == Reading::State::failed) {
    return found(CheckState::critical, "");
  }
  const auto value = reading.number();
  if (!value) {
    return std::nullopt;
  }
  const AlertRange* critical = limit_of(limits.critical, item.id);
  const AlertRange* warning = limit_of(limits.warning, item.id);
  if (critical != nullptr && critical->alerts(*value)) {
    return found(CheckState::critical, fmt::format(" (limit {})", critical->text));
  }
  if (warning != nullptr && warning->alerts(*value)) {
    return found(CheckState::warning, fmt::format(" (limit {})", warning->text));
  }
  if (critical == nullptr && warning == nullptr && out_of_range(item, reading)) {
    return found(CheckState::warning, fmt::format(" (range {})", range_text(item)));
  }
  return std::nullopt;
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
    text += (i == 0 ? "" : ", ") + findings[i].text;
  }
  return findings.size() > kNamed ? fmt::format("{} and {} more", text, findings.size() - kNamed)
                                  : text;
}

}  // namespace

CheckResult check_readings(const std::vector<Item>& items, const Readings& readings,
                           const CheckLimits& limits) {
  std::vector<Finding> findings;
  std::string performance;
  for (const Item& item : items) {
    const Reading& reading = readings.at(item.id);
    if (auto finding = judge(item, reading, limits)) {
      findings.push_back(std::move(*finding));
    }
    if (reading.number() && is_measured(item)) {
      performance += ' ' + performance_datum(item, reading, limits);
    }
  }
  std::stable_sort(findings.begin(), findings.end(),
                   [](const Finding& a, const Finding& b) { return a.state > b.state; });

  CheckResult result;
  result.state = findings.empty() ? CheckState::ok : findings.front().state;
  result.text = fmt::format("KOVA {} - {}", state_name(result.state),
                            status_text(summary(findings, items.size())));
  result.text += performance.empty() ? "\n" : " |" + performance + "\n";
  for (const Finding& finding : findings) {
    result.text += fmt::format("{}: {}\n", state_name(finding.state), status_text(finding.text));
  }
  return result;
}

CheckResult check_unknown(const std::string& reason) {
  return {CheckState::unknown,
          fmt::format("KOVA {} - {}\n", state_name(CheckState::unknown), status_text(reason))};
}

}  // namespace kova_host
