// The command line: global options, and the frame in which every command puts its own.
#include "tools/kovactl/command_line.h"

#include <fmt/format.h>

#include <algorithm>
#include <sstream>

#include "include/kova_iot.h"
#include "tools/host/text_value.h"

namespace kovactl {
namespace {

constexpr const char* kExitCodes =
    "Exit codes: 0 all well, 1 some reads or a write failed, 2 usage, 3 no device.\n"
    "Example:\n  kovactl --simulate list";

constexpr const char* kSimulateBuiltIn = "--simulate-built-in";

}  // namespace

ExitCode exit_code_of(const HostError& error) {
  return error.fault() == Fault::no_device ? ExitCode::no_device : ExitCode::usage;
}

double checked_seconds(const std::string& text, double least, double most, std::string_view what) {
  const auto number = parse_number(text);
  const double seconds =
      !number ? 0 : std::visit([](auto v) { return static_cast<double>(v); }, *number);
  if (seconds < least || seconds > most) {
    throw HostError(Fault::usage,
                    fmt::format("'{}' is no {} of {} to {} seconds", text, what, least, most));
  }
  return seconds;
}

bool asks_for_json(const std::vector<std::string>& arguments) {
  return std::find(arguments.begin(), arguments.end(), "--json") != arguments.end();
}

CommandLine::CommandLine()
    : app_("Reads and writes the hardware-monitoring items of this machine.", "kovactl") {
  app_.add_option("--module", module_, "Load this module instead of searching for it")
      ->type_name("PATH");
  app_.add_option("--simulate", machine_,
                  "Use a simulated machine: the built-in one, or the one described in this file, "
                  "or a shipped one by its name")
      ->type_name("[MACHINE]");
  app_.add_flag(kSimulateBuiltIn)->group("");
  app_.add_option("--timeout", timeout_, "End when the device takes longer than this to answer")
      ->type_name("S");
  app_.set_version_flag("--version", "kovactl " KOVA_IOT_VERSION, "Print the version and exit");
  app_.footer(kExitCodes);
  app_.require_subcommand(1);
}

CLI::App& CommandLine::add(const CommandText& text, Run run) {
  CLI::App* command = app_.add_subcommand(text.name, text.description);
  command->fallthrough();
  command->footer(fmt::format(
      "--module, --simulate and --timeout may stand here too (see kovactl --help).\nExample:\n  {}",
      text.example));
  command->callback([this, run = std::move(run)] { chosen_ = run; });
  return *command;
}

bool CommandLine::is_command(const std::string& word) const {
  const auto commands = app_.get_subcommands({});
  return std::any_of(commands.begin(), commands.end(),
                     [&word](const CLI::App* command) { return command->check_name(word); });
}

// "--simulate" takes a machine only when the next argument can be nothing else: neither an option,
// a command nor an item ID. The parser's own rule would take an ID, so it gets to see an option
// that has a value, or one that has none.
std::vector<std::string> CommandLine::settle_simulate(std::vector<std::string> arguments) const {
  for (size_t i = 0; i < arguments.size() && arguments[i] != "--"; ++i) {
    if (arguments[i] != "--simulate") {
      continue;
    }
    const std::string next = i + 1 < arguments.size() ? arguments[i + 1] : "";
    if (next.empty() || next.front() == '-' || is_command(next) || parse_item_id(next)) {
      arguments[i] = kSimulateBuiltIn;
    }
  }
  return arguments;
}

CommandLine::Parsed CommandLine::parse(std::vector<std::string> arguments) {
  Parsed parsed;
  arguments = settle_simulate(std::move(arguments));
  std::reverse(arguments.begin(), arguments.end());  // the order that the parser takes
  try {
    app_.parse(std::move(arguments));
  } catch (const CLI::ParseError& error) {
    std::ostringstream text;
    if (app_.exit(error, text, text) != 0) {
      throw HostError(Fault::usage, fmt::format("{} (see kovactl --help)", error.what()));
    }
    parsed.answer = text.str();
    return parsed;
  }
  parsed.globals.host.module = module_;
  parsed.globals.host.simulate = app_.count(kSimulateBuiltIn) + app_.count("--simulate") > 0;
  if (app_.count("--simulate") > 0) {
    parsed.globals.host.machine = machine_;
  }
  if (app_.count("--timeout") > 0) {
    parsed.globals.timeout_seconds = checked_seconds(timeout_, 0.1, 86400, "time limit");
  }
  parsed.run = chosen_;
  return parsed;
}

}  // namespace kovactl
