// The command line: commands, options, help texts.
#include "command_line.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <sstream>

#include "errors.h"
#include "include/kova_iot.h"
#include "text_value.h"

namespace kovactl {
namespace {

constexpr std::array<const char*, 7> kCommands = {"list",  "capability", "get",  "set",
                                                  "watch", "metrics",    "senml"};

constexpr const char* kExitCodes =
    "Exit codes: 0 all well, 1 some reads or a write failed, 2 usage, 3 no device.\n"
    "Example:\n  kovactl --simulate list";

// Texts as typed; they are checked here rather than by the parser, whose numbers are laxer.
struct RawTexts {
  std::vector<std::string> ids;
  std::string id;
  std::string interval;
  std::string count;
  std::string machine;
};

constexpr const char* kSimulateBuiltIn = "--simulate-built-in";

// "--simulate" takes a machine only when the next argument can be nothing else: neither an option,
// a command nor an item ID. The parser's own rule would take an ID, so it gets to see an option
// that has a value, or one that has none.
std::vector<std::string> settle_simulate(std::vector<std::string> arguments) {
  for (size_t i = 0; i < arguments.size(); ++i) {
    if (arguments[i] != "--simulate") {
      continue;
    }
    const std::string next = i + 1 < arguments.size() ? arguments[i + 1] : "";
    const bool command = std::find(kCommands.begin(), kCommands.end(), next) != kCommands.end();
    if (next.empty() || next.front() == '-' || command || parse_item_id(next)) {
      arguments[i] = kSimulateBuiltIn;
    }
  }
  return arguments;
}

void add_json(CLI::App& command, Request& request) {
  command.add_flag("--json", request.json, "Print JSON, with a status for every item");
}

CLI::App* add_command(CLI::App& app, Request& request, Command which, const char* description,
                      const char* example) {
  CLI::App* command = app.add_subcommand(kCommands[static_cast<size_t>(which)], description);
  command->fallthrough();
  command->footer(fmt::format(
      "--module and --simulate may stand here too (see kovactl --help).\nExample:\n  {}", example));
  command->callback([&request, which] { request.command = which; });
  return command;
}

void add_readers(CLI::App& app, Request& request) {
  CLI::App* list = add_command(app, request, Command::list, "Show every item with its value",
                               "kovactl --simulate list --family PIC");
  list->add_option("--family", request.family, "Show this family only")->type_name("NAME");
  add_json(*list, request);

  CLI::App* capability =
      add_command(app, request, Command::capability, "Print the capability document",
                  "kovactl --simulate capability --compact");
  capability->add_flag("--compact", request.compact, "Print it on one line");
}

void add_item_commands(CLI::App& app, Request& request, RawTexts& raw) {
  CLI::App* get = add_command(app, request, Command::get, "Read items",
                              "kovactl --simulate get 0x14140B01 336855553");
  get->add_option("ID", raw.ids, "Item ID, hexadecimal (0x...) or decimal")->required();
  get->add_flag("--value-only", request.value_only, "Print the bare values, one a line");
  add_json(*get, request);

  CLI::App* set = add_command(app, request, Command::set, "Write an item",
                              "kovactl --simulate set 0x14140B01 0");
  set->add_option("ID", raw.id, "Item ID, hexadecimal (0x...) or decimal")->required();
  set->add_option("VALUE", request.value, "Number, or the label of one of the item's options")
      ->required();
  add_json(*set, request);

  CLI::App* watch = add_command(app, request, Command::watch, "Show values as they change",
                                "kovactl --simulate watch 0x14170111 --interval 0.5 --count 20");
  watch->add_option("ID", raw.ids, "Item IDs; every item without one");
  watch->add_option("--interval", raw.interval, "Seconds between samples (default 2)")
      ->type_name("S");
  watch->add_option("--count", raw.count, "End after so many samples")->type_name("N");
  watch->add_flag("--json", request.json, "Print one line of JSON a sample");
}

void add_exporters(CLI::App& app, Request& request) {
  CLI::App* metrics =
      add_command(app, request, Command::metrics, "Print all readings in Prometheus text format",
                  "kovactl metrics --output /var/lib/prometheus/node-exporter/kova.prom");
  metrics->add_flag("--openmetrics", request.openmetrics, "Print OpenMetrics 1.0 instead");
  metrics->add_option("--output", request.output, "Replace this file, as a whole or not at all")
      ->type_name("FILE");

  CLI::App* senml = add_command(app, request, Command::senml, "Print all readings as a SenML pack",
                                "kovactl --simulate senml");
  senml->add_option("--base-name", request.base_name, "Name in front of every record's own")
      ->type_name("NAME");
  senml->add_flag("--compact", request.compact, "Print it on one line");
}

void add_global_options(CLI::App& app, Request& request, RawTexts& raw) {
  app.add_option("--module", request.host.module, "Load this module instead of searching for it")
      ->type_name("PATH");
  app.add_option("--simulate", raw.machine,
                 "Use a simulated machine: the built-in one, or the one described in this file, "
                 "or a shipped one by its name")
      ->type_name("[MACHINE]");
  app.add_flag(kSimulateBuiltIn)->group("");
  app.set_version_flag("--version", "kovactl " KOVA_IOT_VERSION, "Print the version and exit");
  app.footer(kExitCodes);
  app.require_subcommand(1);
}

uint32_t checked_id(const std::string& text) {
  const auto id = parse_item_id(text);
  if (!id) {
    throw CommandError(ExitCode::usage, fmt::format("'{}' is no item ID", text));
  }
  return *id;
}

double checked_interval(const std::string& text) {
  const auto number = parse_number(text);
  const double seconds =
      !number ? 0 : std::visit([](auto v) { return static_cast<double>(v); }, *number);
  if (seconds < 0.05 || seconds > 86400) {
    throw CommandError(ExitCode::usage,
                       fmt::format("'{}' is no interval of 0.05 to 86400 seconds", text));
  }
  return seconds;
}

uint32_t checked_count(const std::string& text) {
  const auto count = parse_item_id(text);
  if (!count || *count == 0) {
    throw CommandError(ExitCode::usage, fmt::format("'{}' is no number of samples", text));
  }
  return *count;
}

void check(Request& request, const CLI::App& app, const RawTexts& raw) {
  request.host.simulate = app.count(kSimulateBuiltIn) > 0;
  if (app.count("--simulate") > 0) {
    request.host.simulate = true;
    request.host.machine = raw.machine;
  }
  for (const std::string& text : raw.ids) {
    request.ids.push_back(checked_id(text));
  }
  if (request.command == Command::set) {
    request.ids.push_back(checked_id(raw.id));
  }
  if (!raw.interval.empty()) {
    request.interval_seconds = checked_interval(raw.interval);
  }
  if (!raw.count.empty()) {
    request.count = checked_count(raw.count);
  }
}

}  // namespace

bool asks_for_json(const std::vector<std::string>& arguments) {
  return std::find(arguments.begin(), arguments.end(), "--json") != arguments.end();
}

ParsedLine parse_command_line(std::vector<std::string> arguments) {
  ParsedLine parsed;
  RawTexts raw;
  CLI::App app("Reads and writes the hardware-monitoring items of this machine.", "kovactl");
  add_global_options(app, parsed.request, raw);
  add_readers(app, parsed.request);
  add_item_commands(app, parsed.request, raw);
  add_exporters(app, parsed.request);
  arguments = settle_simulate(std::move(arguments));
  std::reverse(arguments.begin(), arguments.end());  // the order that the parser takes
  try {
    app.parse(std::move(arguments));
    check(parsed.request, app, raw);
  } catch (const CLI::ParseError& error) {
    std::ostringstream text;
    if (app.exit(error, text, text) != 0) {
      throw CommandError(ExitCode::usage, fmt::format("{} (see kovactl --help)", error.what()));
    }
    parsed.answer = text.str();
  }
  return parsed;
}

}  // namespace kovactl
