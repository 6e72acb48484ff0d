// Rules and limits as people write them: ITEM=RANGE, and files of changes to the table.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "tools/host/judgements/judge.h"

namespace kova_host {

// Limits for the items that a text names: an ID, a name, a path or a pattern.
struct NamedLimit {
  std::string items;
  AlertRange range;
};

// "TRK7K VTIN *=70". Throws HostError (usage) for what is none.
NamedLimit parse_named_limit(std::string_view text);

// Gives the limits to the items that they name; a later one takes the place of an earlier, so that
// a pattern can be given first and its exceptions after it. Throws HostError (usage), with the
// nearest name there is, when nothing is called so.
void add_limits(const std::vector<NamedLimit>& limits, const std::vector<Item>& items,
                std::map<uint32_t, AlertRange>& by_id);

struct RulesFile {
  std::map<std::string, RuleChange, std::less<>> rules;  // by kind
  std::vector<NamedLimit> warning;
  std::vector<NamedLimit> critical;
};

// Reads a JSON object, with every part optional:
//
//   {"rules": {"fan-stopped": "off",
//              "battery-worn": {"limit": 0.7, "severity": "critical", "for": "1h"}},
//    "warn": {"TRK7K VTIN *": "70"}, "crit": {"TRK7K VTIN *": "~:85"}}
//
// Limits of rules are in the base units of metrics. "-" is stdin. Throws HostError (usage) for a
// file that cannot be read or is none, and for a rule that there is not, with the nearest.
RulesFile read_rules_file(const std::string& path);

// The file's, for a machine with these items.
Thresholds thresholds_of(const RulesFile& file, const std::vector<Item>& items);

}  // namespace kova_host
