// The command line: global options, and the frame in which every command puts its own.
#include "tools/kovactl/command_line.h"

#include <fmt/format.h>

#include <algorithm>
#include <sstream>

#include "include/kova_iot.h"
#include "tools/host/session/locations.h"
#include "tools/host/session/module_release.h"
#include "tools/host/system/duration.h"
#include "tools/host/system/nearest.h"

namespace kovactl {

using namespace kova_host;
namespace {

constexpr const char* kSimulateBuiltIn = "--simulate-built-in";

}  // namespace

ExitCode exit_code_of(const HostError& error) {
  switch (error.fault()) {
    case Fault::item:
      return ExitCode::item_failed;
    case Fault::no_device:
      return ExitCode::no_device;
    case Fault::usage:
      break;
  }
  return ExitCode::usage;
}

namespace {

// 0 for none.
double checked_time_limit(const std::string& text) {
  constexpr std::chrono::milliseconds kShortest(100);
  const auto none = parse_duration(text);
  return none && none->count() == 0
             ? 0
             : std::chrono::duration<double>(
                   checked_duration(text, "time limit", kShortest, std::chrono::hours(24)))
                   .count();
}

}  // namespace

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
  app_.add_option("--timeout", timeout_,
                  "End when the device takes longer than this to answer, check when it takes "
                  "longer in all (10 by default); 0: wait for ever")
      ->type_name("TIME");
  app_.set_version_flag(
      "-V,--version",
      [this] {
        const std::string module = module_.empty() ? module_library().native() : module_;
        return fmt::format("kovactl {}\nmodule {}{}", KOVA_IOT_VERSION, module,
                           release_text(module));
      },
      "Print the releases of kovactl and of the module, and exit");
  app_.footer(fmt::format("Exit codes: {}.\nExample:\n  kovactl --simulate list", kUsualExitCodes));
  app_.require_subcommand(1);
}

CLI::App& CommandLine::add(const CommandText& text, Run run) {
  CLI::App* command = app_.add_subcommand(text.name, text.description);
  command->fallthrough();
  command->footer(
      fmt::format("--module, --simulate and --timeout may stand here too (see kovactl --help).\n"
                  "Exit codes: {}.\nExample:\n  {}",
                  text.exit_codes, text.example));
  command->callback([this, run = std::move(run)] { chosen_ = run; });
  return *command;
}

bool CommandLine::is_command(const std::string& word) const {
  const auto commands = app_.get_subcommands({});
  return std::any_of(commands.begin(), commands.end(),
                     [&word](const CLI::App* command) { return command->check_name(word); });
}

// The first argument that is neither an option nor the value of one. An option that is not known
// may have a value or none, and so may "--simulate": only a command is certain not to be one.
size_t CommandLine::place_of_command(const std::vector<std::string>& arguments) const {
  bool may_be_value = false;
  for (size_t i = 0; i < arguments.size() && arguments[i] != "--"; ++i) {
    if (arguments[i].starts_with('-')) {
      const bool has_value = arguments[i] == "--module" || arguments[i] == "--timeout";
      may_be_value = !has_value && arguments[i].find('=') == std::string::npos;
      i += has_value ? 1 : 0;
    } else if (!may_be_value || is_command(arguments[i])) {
      return i;
    } else {
      may_be_value = false;
    }
  }
  return arguments.size();
}

std::string CommandLine::command_in(const std::vector<std::string>& arguments) const {
  const size_t place = place_of_command(arguments);
  return place < arguments.size() ? arguments[place] : "";
}

// "--simulate" takes a machine only when the next argument is one: in front of the command anything
// but an option or the command itself, behind it what is found as a machine description. The
// parser's own rule would take an item, so it gets to see an option that has a value, or one that
// has none.
std::vector<std::string> CommandLine::settle_simulate(std::vector<std::string> arguments) const {
  const size_t command = place_of_command(arguments);
  for (size_t i = 0; i < arguments.size() && arguments[i] != "--"; ++i) {
    if (arguments[i] != "--simulate") {
      continue;
    }
    const std::string next = i + 1 < arguments.size() ? arguments[i + 1] : "";
    const bool machine = i > command ? next.ends_with(".json") || is_machine_description(next)
                                     : !is_command(next) && !next.starts_with('-');
    if (next.empty() || !machine) {
      arguments[i] = kSimulateBuiltIn;
    } else {
      ++i;
    }
  }
  return arguments;
}

// "help list" is "list --help"; what is no command is refused as one.
std::vector<std::string> CommandLine::settle_help(std::vector<std::string> arguments) const {
  if (!arguments.empty() && arguments.front() == "help") {
    arguments.erase(arguments.begin());
    arguments.resize(std::min<size_t>(arguments.size(), 1));
    if (arguments.empty() || arguments.front().starts_with('-') || is_command(arguments.front())) {
      arguments.emplace_back("--help");
    }
  }
  return arguments;
}

// What is wrong with arguments that the parser refuses, with what was probably meant.
std::string CommandLine::complaint(const std::vector<std::string>& arguments,
                                   const std::string& otherwise) const {
  const std::string word = command_in(arguments);
  std::vector<std::string> commands;
  std::vector<std::string> options;
  const auto add_options_of = [&options](const CLI::App& app) {
    for (const CLI::Option* option : app.get_options()) {
      for (const std::string& name : option->get_lnames()) {
        options.push_back("--" + name);
      }
    }
  };
  add_options_of(app_);
  for (const CLI::App* command : app_.get_subcommands({})) {
    if (!command->get_group().empty()) {  // one that people are not to know has none
      commands.push_back(command->get_name());
    }
    if (command->check_name(word)) {
      add_options_of(*command);
    }
  }
  if (!word.empty() && !is_command(word)) {
    return fmt::format("no command '{}'{}", word, suggestion(word, commands));
  }
  for (const std::string& argument : arguments) {
    const std::string name = argument.substr(0, argument.find('='));
    if (name.starts_with("--") &&
        std::find(options.begin(), options.end(), name) == options.end()) {
      return fmt::format("no option '{}'{}", name, suggestion(name, options));
    }
  }
  return word.empty() ? fmt::format("a command is needed: {}", fmt::join(commands, ", "))
                      : otherwise;
}

CommandLine::Parsed CommandLine::parse(std::vector<std::string> arguments) {
  Parsed parsed;
  arguments = settle_simulate(settle_help(std::move(arguments)));
  if (const std::string word = command_in(arguments); !word.empty() && !is_command(word)) {
    // Also where help is asked for, which the parser would give of the whole program.
    throw HostError(Fault::usage, fmt::format("{} (see kovactl --help)", complaint(arguments, "")));
  }
  try {
    // In the order that the parser takes.
    app_.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
  } catch (const CLI::ParseError& error) {
    std::ostringstream text;
    if (app_.exit(error, text, text) != 0) {
      throw HostError(Fault::usage,
                      fmt::format("{} (see kovactl --help)", complaint(arguments, error.what())));
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
    parsed.globals.timeout_seconds = checked_time_limit(timeout_);
  }
  parsed.run = chosen_;
  return parsed;
}

}  // namespace kovactl
