// The table of judgements, held against one sweep.
#include "tools/host/judgements/judge.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>

#include "tools/host/judgements/judgement_table.h"
#include "tools/host/values/number_of.h"
#include "tools/host/values/shown_value.h"

namespace kova_host {
namespace {

const AlertRange* limit_of(const std::map<uint32_t, AlertRange>& limits, uint32_t id) {
  const auto found = limits.find(id);
  return found == limits.end() ? nullptr : &found->second;
}

Finding finding_of(const Item& item, const Reading& reading) {
  Finding finding;
  finding.id = item.id;
  finding.path = label_of(item);
  finding.value = value_with_unit(item, reading);
  return finding;
}

// An action for every item has a place for this one's ID.
std::string action_for(std::string_view action, uint32_t id) {
  constexpr std::string_view kPlace = "{id}";
  std::string text(action);
  if (const size_t at = text.find(kPlace); at != std::string::npos) {
    text.replace(at, kPlace.size(), id_text(id));
  }
  return text;
}

std::optional<Finding> finding_by(const Judgement& row, const SweepView& sweep, const Item& item,
                                  const Reading& reading, const RuleChange& change) {
  Judgement rule = row;
  rule.limit = change.limit ? change.limit : row.limit;
  const auto evidence = row.condition({rule, sweep, item, reading});
  if (!evidence) {
    return std::nullopt;
  }
  Finding finding = finding_of(item, reading);
  finding.kind = row.kind;
  finding.severity = change.severity.value_or(row.severity);
  finding.says = row.says;
  finding.evidence = evidence->text;
  finding.mark = row.mark;
  finding.action = action_for(row.action, item.id);
  finding.distance = evidence->distance;
  return finding;
}

double distance_from(const AlertRange& range, double value) {
  return range.inside ? std::min(value - range.start, range.end - value)
                      : std::max(range.start - value, value - range.end);
}

std::optional<Finding> finding_by_limit(const Item& item, const Reading& reading,
                                        const AlertRange* warning, const AlertRange* critical) {
  if (reading.state != Reading::State::good) {
    return std::nullopt;
  }
  Finding finding = finding_of(item, reading);
  finding.mark = "LIMIT";
  const auto number = judged_number(item, reading);
  const AlertRange* broken = nullptr;
  if (!number) {
    finding.kind = kNoNumberKind;
    finding.severity = Severity::unknown;
    finding.says = "has no number to hold against its limit";
    finding.evidence = finding.value;
    return finding;
  }
  if (critical != nullptr && critical->alerts(*number)) {
    broken = critical;
    finding.severity = Severity::critical;
  } else if (warning != nullptr && warning->alerts(*number)) {
    broken = warning;
  } else {
    return std::nullopt;
  }
  finding.kind = kLimitKind;
  finding.says = "is beyond its limit";
  finding.evidence = fmt::format("{} (limit {})", finding.value, broken->text);
  finding.distance = distance_from(*broken, *number);
  return finding;
}

void judge_item(const SweepView& sweep, const Item& item, const Reading& reading,
                const Thresholds& thresholds, std::vector<Finding>& findings) {
  const AlertRange* critical = limit_of(thresholds.critical, item.id);
  const AlertRange* warning = limit_of(thresholds.warning, item.id);
  const bool limited = critical != nullptr || warning != nullptr;
  for (const Judgement& rule : judgement_table()) {
    const auto change = thresholds.rules.find(rule.kind);
    const bool changed = change != thresholds.rules.end();
    if (rule.condition == nullptr || (limited && rule.on_value) ||
        (changed && change->second.off) || !looks_at(rule.looks_at, item)) {
      continue;
    }
    if (auto finding =
            finding_by(rule, sweep, item, reading, changed ? change->second : RuleChange())) {
      findings.push_back(std::move(*finding));
    }
  }
  if (limited) {
    if (auto finding = finding_by_limit(item, reading, warning, critical)) {
      findings.push_back(std::move(*finding));
    }
  }
}

bool asks(const Judgement& rule, const Item& other) {
  std::string_view rest = rule.asks;
  while (!rest.empty()) {
    const size_t end = std::min(rest.find('|'), rest.size());
    if (fits_path(rest.substr(0, end), other)) {
      return true;
    }
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return false;
}

// The rules that have something to look at among `items`.
std::vector<const Judgement*> rules_on(const std::vector<Item>& items) {
  std::vector<const Judgement*> rules;
  for (const Judgement& rule : judgement_table()) {
    if (rule.condition != nullptr && (rule.asks_peers || !rule.asks.empty()) &&
        std::any_of(items.begin(), items.end(),
                    [&rule](const Item& item) { return looks_at(rule.looks_at, item); })) {
      rules.push_back(&rule);
    }
  }
  return rules;
}

}  // namespace

std::vector<Finding> judge(const std::vector<Item>& items, const Readings& readings,
                           const Thresholds& thresholds) {
  const SweepView sweep(items, readings);
  std::vector<Finding> findings;
  std::set<uint32_t> judged;
  for (const Item& item : items) {
    const Reading* reading = sweep.reading(item.id);
    if (reading != nullptr && judged.insert(item.id).second) {
      judge_item(sweep, item, *reading, thresholds, findings);
    }
  }
  std::stable_sort(findings.begin(), findings.end(),
                   [](const Finding& a, const Finding& b) { return a.severity > b.severity; });
  return findings;
}

RunningJudge::RunningJudge(const std::vector<Item>& items, Thresholds thresholds)
    : items_(items), thresholds_(std::move(thresholds)) {
  for (const Item& item : items) {
    by_id_.emplace(item.id, &item);
    for (const Judgement* rule : rules_on({item})) {
      for (const Item& other : items) {
        if (asks(*rule, other) || (rule->asks_peers && looks_at(rule->looks_at, other))) {
          asked_by_[other.id].insert(item.id);
        }
      }
    }
  }
}

std::vector<uint32_t> RunningJudge::take(const Readings& readings,
                                         const std::vector<uint32_t>& fresh) {
  std::set<uint32_t> judged(fresh.begin(), fresh.end());
  for (const uint32_t id : fresh) {
    if (const auto asked = asked_by_.find(id); asked != asked_by_.end()) {
      judged.insert(asked->second.begin(), asked->second.end());
    }
  }
  const SweepView sweep(items_, readings);
  for (const uint32_t id : judged) {
    const auto item = by_id_.find(id);
    const Reading* reading = sweep.reading(id);
    if (item != by_id_.end() && reading != nullptr) {
      std::vector<Finding>& findings = findings_[id];
      findings.clear();
      judge_item(sweep, *item->second, *reading, thresholds_, findings);
    }
  }
  return {judged.begin(), judged.end()};
}

const std::vector<Finding>& RunningJudge::on(uint32_t id) const {
  static const std::vector<Finding> kNone;
  const auto findings = findings_.find(id);
  return findings == findings_.end() ? kNone : findings->second;
}

std::vector<Item> with_companions(const std::vector<Item>& selected, const std::vector<Item>& all) {
  const auto rules = rules_on(selected);
  std::set<uint32_t> taken;
  for (const Item& item : selected) {
    taken.insert(item.id);
  }
  std::vector<Item> items = selected;
  for (const Item& item : all) {
    const bool wanted = std::any_of(rules.begin(), rules.end(), [&item](const Judgement* rule) {
      return asks(*rule, item) || (rule->asks_peers && looks_at(rule->looks_at, item));
    });
    if (wanted && taken.insert(item.id).second) {
      items.push_back(item);
    }
  }
  return items;
}

std::vector<Finding> judge_selected(const std::vector<Item>& selected,
                                    const std::vector<Item>& read, const Readings& readings,
                                    const Thresholds& thresholds) {
  const auto rules = rules_on(selected);
  std::set<uint32_t> told;
  for (const Item& item : selected) {
    told.insert(item.id);
  }
  for (const Item& item : read) {
    const auto reading = readings.find(item.id);
    const bool failed =
        reading != readings.end() && reading->second.state == Reading::State::failed;
    if (failed && std::any_of(rules.begin(), rules.end(),
                              [&item](const Judgement* rule) { return asks(*rule, item); })) {
      told.insert(item.id);
    }
  }
  std::vector<Finding> findings = judge(read, readings, thresholds);
  std::erase_if(findings, [&told](const Finding& finding) { return !told.contains(finding.id); });
  return findings;
}

std::string marks_on(uint32_t id, const std::vector<Finding>& findings) {
  std::string marks;
  for (const Finding& finding : findings) {
    if (finding.id == id && !finding.mark.empty()) {
      marks += (marks.empty() ? "" : ", ") + finding.mark;
    }
  }
  return marks;
}

std::optional<double> judged_number(const Item& item, const Reading& reading) {
  if (const auto* text = std::get_if<std::string>(&reading.value)) {
    const auto option = std::find_if(item.options.begin(), item.options.end(),
                                     [text](const Option& o) { return o.label == *text; });
    if (option != item.options.end()) {
      return static_cast<double>(option->value);
    }
    const auto number = number_in(reading);
    return number ? number : published_value(item, reading);
  }
  return reading.number();
}

std::chrono::milliseconds held_by(std::string_view kind, const Thresholds& thresholds) {
  if (const auto change = thresholds.rules.find(kind);
      change != thresholds.rules.end() && change->second.held) {
    return *change->second.held;
  }
  const Judgement* rule = find_judgement(kind);
  return rule == nullptr ? std::chrono::milliseconds(0) : std::chrono::milliseconds(rule->held);
}

}  // namespace kova_host
