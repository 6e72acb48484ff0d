// `kovactl check`: a check for Icinga, Nagios and their kin.
#include <fmt/format.h>

#include "tools/host/judgements/monitoring_check.h"
#include "tools/host/record/listing_file.h"
#include "tools/kovactl/command_support.h"
#include "tools/kovactl/output.h"

namespace kovactl {

using namespace kova_host;
namespace {

struct CheckOptions {
  Selection selection;
  std::vector<std::string> warning;   // ITEM=RANGE
  std::vector<std::string> critical;  // ITEM=RANGE
  std::string expected;               // a file; "" for none
  std::string rules;                  // a file; "" for none
};

// What plug-ins of monitoring systems are expected to keep to: these have limits of their own, and
// leave behind a process that is stuck.
constexpr double kUsualLimitSeconds = 10;

std::vector<NamedLimit> limits_from(const std::vector<std::string>& texts) {
  std::vector<NamedLimit> limits;
  limits.reserve(texts.size());
  for (const std::string& text : texts) {
    limits.push_back(parse_named_limit(text));
  }
  return limits;
}

// What goes wrong on the way is told as an unknown state: by main, as for every command.
ExitCode run_check(const GlobalOptions& globals, const CheckOptions& options) {
  globals.device->limit_all(globals.timeout_seconds.value_or(kUsualLimitSeconds));
  const auto expected =
      options.expected.empty() ? std::vector<ListedItem>() : read_list_document(options.expected);
  const RulesFile rules = rules_from(options.rules);
  const auto warning = limits_from(options.warning);
  const auto critical = limits_from(options.critical);
  auto session = open_session(globals);
  const std::vector<Item> known = with_missing(Inventory::of(*session).items(), expected);
  Thresholds thresholds = thresholds_of(rules, known);
  add_limits(warning, known, thresholds.warning);
  add_limits(critical, known, thresholds.critical);
  const std::vector<Item> items = select_distinct(known, options.selection);
  const Judged judged = read_and_judge(*session, items, known, thresholds);
  session.reset();
  globals.device->require_good_end();
  const CheckResult result = check_readings(items, judged.readings, judged.findings, thresholds);
  print(result.text);
  return static_cast<ExitCode>(result.state);
}

}  // namespace

void add_check(CommandLine& line) {
  auto options = std::make_shared<CheckOptions>();
  CLI::App& command =
      line.add({"check", "Judge the readings as a check for Icinga or Nagios",
                "kovactl --simulate check --warn 'TRK7K VTIN *=70' --crit 'TRK7K VTIN *=~:85'",
                "0 OK, 1 WARNING, 2 CRITICAL, 3 UNKNOWN"},
               [options](const GlobalOptions& globals) { return run_check(globals, *options); });
  add_selection(command, options->selection);
  command
      .add_option("--warn", options->warning,
                  "Warn when the items' values leave the range: 70, 10:, ~:85, 10:20, @10:20")
      ->type_name("ITEM=RANGE")
      ->allow_extra_args(false);
  command.add_option("--crit", options->critical, "The same for a critical alert")
      ->type_name("ITEM=RANGE")
      ->allow_extra_args(false);
  command
      .add_option("--expect", options->expected,
                  "Critical for each item that is missing since `list --json` printed this file")
      ->type_name("FILE");
  add_rules_option(command, options->rules);
}

}  // namespace kovactl
