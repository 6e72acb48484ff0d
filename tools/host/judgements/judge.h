// What needs attention on a machine: the table of judgements, held against one sweep.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "tools/host/judgements/alert_range.h"
#include "tools/host/judgements/judgement.h"

namespace kova_host {

// How a rule differs from its row in the table.
struct RuleChange {
  bool off = false;
  std::optional<Severity> severity = {};
  std::optional<double> limit = {};
  std::optional<std::chrono::milliseconds> held = {};
};

// What the user wants judged otherwise. An item with a limit of its own is judged by that, and by
// no rule on its value.
struct Thresholds {
  std::map<uint32_t, AlertRange> warning;  // by item ID
  std::map<uint32_t, AlertRange> critical;
  std::map<std::string, RuleChange, std::less<>> rules;  // by the rule's kind
};

// The kind of findings about items that failed.
inline constexpr std::string_view kUnreadableKind = "unreadable";

// The kind of findings that come from a limit of the user's, and of those about a limit that there
// is no number for: its verdict is neither good nor bad.
inline constexpr std::string_view kLimitKind = "limit";
inline constexpr std::string_view kNoNumberKind = "no-number";

// Judges every item of `items` that has a reading, each ID once. The worst findings first, and in
// the items' order among their like. A family's range, its low-battery setting and the battery type
// in force come from the same sweep; a rule that lacks one of them is silent, and tells of the item
// that could not be read.
std::vector<Finding> judge(const std::vector<Item>& items, const Readings& readings,
                           const Thresholds& thresholds = {});

// Judges a machine's sweeps one after the other, and of each only what fresh readings can change.
class RunningJudge {
 public:
  // `items` outlives it.
  explicit RunningJudge(const std::vector<Item>& items, Thresholds thresholds = {});

  // Judges anew with all readings of the machine, of which those of `fresh` have come since the
  // last time. Gives the IDs of the items that it has judged.
  std::vector<uint32_t> take(const Readings& readings, const std::vector<uint32_t>& fresh);

  // What needs attention on the item now.
  const std::vector<Finding>& on(uint32_t id) const;

 private:
  const std::vector<Item>& items_;
  Thresholds thresholds_;
  std::map<uint32_t, const Item*> by_id_;
  std::map<uint32_t, std::set<uint32_t>> asked_by_;  // an item, and those whose rules ask it
  std::map<uint32_t, std::vector<Finding>> findings_;
};

// `selected`, and behind them what of `all` the rules on them ask beside them: to be read together.
std::vector<Item> with_companions(const std::vector<Item>& selected, const std::vector<Item>& all);

// Judges `read`, as with_companions made it, and tells of the selected, and of companions that are
// needed and could not be read: without them the verdict would be none.
std::vector<Finding> judge_selected(const std::vector<Item>& selected,
                                    const std::vector<Item>& read, const Readings& readings,
                                    const Thresholds& thresholds = {});

// The marks of the findings on an item, behind its value: "HOT", or "" where nothing is to be
// marked.
std::string marks_on(uint32_t id, const std::vector<Finding>& findings);

// The number that a limit is held against: the reading's, that of a text that is one ("0x7", "2 h
// 5 m" in minutes), or the option that a text is the label of. Nothing for other texts.
std::optional<double> judged_number(const Item& item, const Reading& reading);

// How long a finding has to hold before it counts, with the user's change.
std::chrono::milliseconds held_by(std::string_view kind, const Thresholds& thresholds);

}  // namespace kova_host
