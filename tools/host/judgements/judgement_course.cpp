// Judgements that begin, change and end.
#include "tools/host/judgements/judgement_course.h"

#include <algorithm>
#include <set>

namespace kova_host {
namespace {

// As long as the alert on what is gone looks back.
constexpr double kRememberedSeconds = 3600;

double seconds(std::chrono::milliseconds time) {
  return std::chrono::duration<double>(time).count();
}

bool is_worse(const Finding& a, const Finding& b) {
  return a.severity != b.severity ? a.severity > b.severity : a.distance > b.distance;
}

}  // namespace

std::vector<Finding> JudgementCourse::found(double time, const std::vector<Item>& items,
                                            const Readings& readings) {
  for (const Item& item : items) {
    if (!item.missing) {
      seen_.insert_or_assign(item.id, Seen{item, time});
    }
  }
  std::erase_if(
      seen_, [time](const auto& entry) { return time - entry.second.time > kRememberedSeconds; });
  std::set<uint32_t> present;
  for (const Item& item : items) {
    present.insert(item.id);
  }
  if (std::all_of(seen_.begin(), seen_.end(),
                  [&present](const auto& entry) { return present.contains(entry.first); })) {
    return judge(items, readings, thresholds_);
  }
  std::vector<Item> all = items;
  Readings answers = readings;
  for (const auto& [id, seen] : seen_) {
    if (!present.contains(id)) {
      all.push_back(seen.item);
      all.back().missing = true;
      answers.emplace(id, Reading());
    }
  }
  return judge(all, answers, thresholds_);
}

void JudgementCourse::begin_or_keep(double time, const Finding& finding,
                                    std::vector<Transition>& transitions) {
  const auto [entry, begins] =
      standing_.try_emplace({finding.kind, finding.id}, Standing{finding, finding, time, false});
  Standing& standing = entry->second;
  const Severity before = standing.now.severity;
  standing.now = finding;
  if (is_worse(finding, standing.worst)) {
    standing.worst = finding;
  }
  const bool counted = standing.counts;
  standing.counts = counted || patience_ == Patience::none ||
                    time - standing.since >= seconds(held_by(finding.kind, thresholds_));
  if (standing.counts && (!counted || before != finding.severity)) {
    transitions.push_back(
        {time, counted ? std::optional(before) : std::nullopt, finding.severity, standing});
  }
}

std::vector<Transition> JudgementCourse::take(double time, const std::vector<Item>& items,
                                              const Readings& readings) {
  std::vector<Transition> transitions;
  order_.clear();
  for (const Finding& finding : found(time, items, readings)) {
    order_.emplace_back(finding.kind, finding.id);
    begin_or_keep(time, finding, transitions);
  }
  std::erase_if(standing_, [&](const auto& entry) {
    if (std::find(order_.begin(), order_.end(), entry.first) != order_.end()) {
      return false;
    }
    if (entry.second.counts) {
      transitions.push_back({time, entry.second.now.severity, std::nullopt, entry.second});
    }
    return true;
  });
  return transitions;
}

std::vector<Standing> JudgementCourse::standing() const {
  std::vector<Standing> counting;
  for (const Key& key : order_) {
    if (const Standing& standing = standing_.at(key); standing.counts) {
      counting.push_back(standing);
    }
  }
  return counting;
}

}  // namespace kova_host
