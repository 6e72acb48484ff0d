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
};

// What plug-ins of monitoring systems are expected to keep to: these have limits of their own, and
// leave behind a process that is stuck.
constexpr double kUsualLimitSeconds = 10;

// Adds the limit to every item that its first half names; a later one takes the place of an
// earlier, so that a pattern can be given first and its exceptions after it.
void add_limits(const std::vector<std::string>& texts, const std::vector<Item>& items,
                std::map<uint32_t, AlertRange>& limits) {
  for (const std::string& text : texts) {
    const size_t equals = text.rfind('=');
    const auto range = equals == std::string::npos
                           ? std::nullopt
                           : parse_alert_range(std::string_view(text).substr(equals + 1));
    if (!range) {
      throw HostError(Fault::usage, fmt::format("{}: not ITEM=RANGE, such as 'TRK7K VTIN *=70' or "
                                                "'PoE 1 current=10:500'",
                                                text));
    }
    for (const Item& item : named_items(items, text.substr(0, equals))) {
      limits[item.id] = *range;
    }
  }
}

// What goes wrong on the way is told as an unknown state: by main, as for every command.
ExitCode run_check(const GlobalOptions& globals, const CheckOptions& options) {
  globals.attendant->limit_all(globals.timeout_seconds.value_or(kUsualLimitSeconds));
  const auto expected =
      options.expected.empty() ? std::vector<ListedItem>() : read_list_document(options.expected);
  const auto session = open_session(globals);
  const std::vector<Item> known = with_missing(Inventory::of(*session).items(), expected);
  Thresholds thresholds;
  add_limits(options.warning, known, thresholds.warning);
  add_limits(options.critical, known, thresholds.critical);
  const std::vector<Item> items = select_distinct(known, options.selection);
  const std::vector<Item> read = with_companions(items, distinct(known));
  const Readings readings = read_items(*session, read);
  const CheckResult result = check_readings(
      items, readings, judge_selected(items, read, readings, thresholds), thresholds);
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
}

}  // namespace kovactl
