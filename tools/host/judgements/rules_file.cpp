// Reading rules and limits.
#include "tools/host/judgements/rules_file.h"

#include <fmt/format.h>

#include "tools/host/judgements/judgement_table.h"
#include "tools/host/model/selection.h"
#include "tools/host/system/duration.h"
#include "tools/host/system/errors.h"
#include "tools/host/system/json_ptr.h"
#include "tools/host/system/nearest.h"
#include "tools/host/system/regular_file.h"

namespace kova_host {
namespace {

[[noreturn]] void refuse(const std::string& why) {
  throw HostError(Fault::usage, why);
}

std::string_view text_of(const json_t* json) {
  return json_is_string(json) ? std::string_view(json_string_value(json), json_string_length(json))
                              : std::string_view();
}

NamedLimit named_limit(std::string_view items, std::string_view range) {
  const auto parsed = parse_alert_range(range);
  if (items.empty() || !parsed) {
    refuse(fmt::format("{}={}: not ITEM=RANGE, such as 'TRK7K VTIN *=70' or 'PoE 1 current=10:500'",
                       items, range));
  }
  return {std::string(items), *parsed};
}

std::vector<std::string> kinds_of_all() {
  std::vector<std::string> kinds;
  for (const Judgement& rule : judgement_table()) {
    if (rule.condition != nullptr) {
      kinds.emplace_back(rule.kind);
    }
  }
  return kinds;
}

Severity severity_from(std::string_view text) {
  for (const Severity severity : {Severity::warning, Severity::critical}) {
    if (text == severity_name(severity)) {
      return severity;
    }
  }
  refuse(R"("severity" is "warning" or "critical")");
}

void take(const Judgement& rule, std::string_view key, const json_t* value, RuleChange& change) {
  if (key == "severity") {
    change.severity = severity_from(text_of(value));
  } else if (key == "limit") {
    if (!json_is_number(value) || !rule.limit) {
      refuse(rule.limit ? R"("limit" is a number)" : "this rule has no limit");
    }
    change.limit = json_number_value(value);
  } else if (key == "for") {
    change.held = parse_duration(text_of(value));
    if (!change.held) {
      refuse(R"("for" is a duration such as "5m")");
    }
  } else {
    refuse(fmt::format("'{}' is none of severity, limit and for", key));
  }
}

RuleChange change_from(const Judgement& rule, const json_t* json) {
  RuleChange change;
  if (text_of(json) == "off") {
    change.off = true;
    return change;
  }
  if (!json_is_object(json)) {
    refuse(R"(it is "off" or an object)");
  }
  const char* key = nullptr;
  json_t* value = nullptr;
  // jansson's loop takes a pointer that it may change.
  json_object_foreach(const_cast<json_t*>(json), key, value) {
    take(rule, key, value, change);
  }
  return change;
}

void read_rules(json_t* json, RulesFile& file) {
  const char* kind = nullptr;
  json_t* value = nullptr;
  json_object_foreach(json, kind, value) {
    const Judgement* rule = find_judgement(kind);
    if (rule == nullptr || rule->condition == nullptr) {
      refuse(fmt::format("no rule '{}'{}", kind, suggestion(kind, kinds_of_all())));
    }
    try {
      file.rules[kind] = change_from(*rule, value);
    } catch (const HostError& error) {
      refuse(fmt::format("{}: {}", kind, error.what()));
    }
  }
}

void read_limits(json_t* json, std::vector<NamedLimit>& limits) {
  const char* items = nullptr;
  json_t* range = nullptr;
  json_object_foreach(json, items, range) {
    limits.push_back(named_limit(items, text_of(range)));
  }
}

void read_part(std::string_view key, json_t* part, RulesFile& file) {
  if (key != "rules" && key != "warn" && key != "crit") {
    refuse(fmt::format("'{}' is none of rules, warn and crit", key));
  }
  if (!json_is_object(part)) {
    refuse(fmt::format("\"{}\" is no object", key));
  }
  if (key == "rules") {
    read_rules(part, file);
  } else {
    read_limits(part, key == "warn" ? file.warning : file.critical);
  }
}

}  // namespace

NamedLimit parse_named_limit(std::string_view text) {
  const size_t equals = text.rfind('=');
  if (equals == std::string_view::npos) {
    refuse(fmt::format("{}: not ITEM=RANGE, such as 'TRK7K VTIN *=70' or 'PoE 1 current=10:500'",
                       text));
  }
  return named_limit(text.substr(0, equals), text.substr(equals + 1));
}

void add_limits(const std::vector<NamedLimit>& limits, const std::vector<Item>& items,
                std::map<uint32_t, AlertRange>& by_id) {
  for (const NamedLimit& limit : limits) {
    for (const Item& item : named_items(items, limit.items)) {
      by_id[item.id] = limit.range;
    }
  }
}

RulesFile read_rules_file(const std::string& path) {
  json_error_t error;
  const std::string text = read_file_or_stdin(path);
  const JsonPtr json(json_loadb(text.data(), text.size(), JSON_REJECT_DUPLICATES, &error));
  if (!json_is_object(json.get())) {
    refuse(json ? fmt::format("'{}' has no JSON object", path)
                : fmt::format("'{}', line {}: {}", path, error.line, error.text));
  }
  RulesFile file;
  const char* key = nullptr;
  json_t* part = nullptr;
  json_object_foreach(json.get(), key, part) {
    try {
      read_part(key, part, file);
    } catch (const HostError& refused) {
      refuse(fmt::format("'{}': {}", path, refused.what()));
    }
  }
  return file;
}

Thresholds thresholds_of(const RulesFile& file, const std::vector<Item>& items) {
  Thresholds thresholds;
  thresholds.rules = file.rules;
  add_limits(file.warning, items, thresholds.warning);
  add_limits(file.critical, items, thresholds.critical);
  return thresholds;
}

}  // namespace kova_host
