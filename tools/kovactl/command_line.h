// The command line: global options, and the frame in which every command puts its own.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tools/host/session/device_host.h"
#include "tools/host/system/errors.h"

namespace kovactl {

// Documented in the man page: scripts rely on these numbers.
enum class ExitCode : int {
  success = 0,      // every read and write went well
  item_failed = 1,  // some reads or a write failed, or the result could not be written
  usage = 2,        // wrong arguments, or the module or the simulated machine cannot be loaded
  no_device = 3,    // no device library, or no device behind it
};

ExitCode exit_code_of(const kova_host::HostError& error);

class DeviceUse;

// Options that every command takes.
struct GlobalOptions {
  kova_host::HostOptions host;
  std::optional<double> timeout_seconds;  // of a call into the module; 0 for no limit
  DeviceUse* device = nullptr;            // never null in a command
};

// Does a command's work. What ends it early is thrown: HostError or OutputError.
using Run = std::function<ExitCode(const GlobalOptions&)>;

inline constexpr const char* kUsualExitCodes =
    "0 all well, 1 some reads or a write failed, 2 usage, 3 no device";

struct CommandText {
  const char* name;
  const char* description;  // one line, without a full stop
  const char* example;      // a whole line as typed
  const char* exit_codes = kUsualExitCodes;
};

class CommandLine {
 public:
  CommandLine();

  // The new command, to which its owner adds options; their values are checked by `run`.
  CLI::App& add(const CommandText& text, Run run);

  // Either work to do or, for --help and --version, a text to print.
  struct Parsed {
    GlobalOptions globals;
    Run run;
    std::optional<std::string> answer;
  };

  // `arguments` without the program's name. Throws HostError (usage).
  Parsed parse(std::vector<std::string> arguments);

  // What stands in the command's place, whatever else the arguments hold; "" if nothing does.
  std::string command_in(const std::vector<std::string>& arguments) const;

  // For those who ask what may be typed.
  const CLI::App& app() const { return app_; }

 private:
  bool is_command(const std::string& word) const;
  size_t place_of_command(const std::vector<std::string>& arguments) const;
  std::vector<std::string> settle_simulate(std::vector<std::string> arguments) const;
  std::vector<std::string> settle_help(std::vector<std::string> arguments) const;
  std::string complaint(const std::vector<std::string>& arguments,
                        const std::string& otherwise) const;

  CLI::App app_;
  std::string module_;
  std::string machine_;
  std::string timeout_;
  Run chosen_;
};

// True if the arguments ask for JSON, which holds for errors in the arguments themselves too.
bool asks_for_json(const std::vector<std::string>& arguments);

}  // namespace kovactl
