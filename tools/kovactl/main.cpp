// kovactl: the module's items at the command line. A host like any agent, through the C interface.
#include <cerrno>
#include <csignal>
#include <exception>
#include <string>
#include <vector>

#include "commands.h"
#include "json_report.h"
#include "json_writer.h"
#include "output.h"

namespace {

using kovactl::Command;
using kovactl::CommandError;
using kovactl::ExitCode;

ExitCode run_command(const kovactl::Request& request) {
  switch (request.command) {
    case Command::list:
      return run_list(request);
    case Command::capability:
      return run_capability(request);
    case Command::get:
      return run_get(request);
    case Command::set:
      return run_set(request);
    case Command::watch:
      return run_watch(request);
    case Command::metrics:
      return run_metrics(request);
    case Command::senml:
      return run_senml(request);
  }
  return ExitCode::usage;
}

ExitCode run(const std::vector<std::string>& arguments) {
  try {
    const kovactl::ParsedLine parsed = kovactl::parse_command_line(arguments);
    if (parsed.answer) {
      kovactl::print(*parsed.answer);
      return ExitCode::success;
    }
    return run_command(parsed.request);
  } catch (const CommandError& error) {
    kovactl::report(error.what());
    if (kovactl::asks_for_json(arguments)) {
      kovactl::print(
          kovactl::json_document(kovactl::json_error(error).get(), kovactl::JsonLayout::indented));
    }
    return error.code();
  }
}

}  // namespace

int main(int argc, char** argv) {
  // A reader that has seen enough shows as EPIPE instead, and the module is shut down in order.
  (void)std::signal(SIGPIPE, SIG_IGN);
  try {
    return static_cast<int>(run(std::vector<std::string>(argv + 1, argv + argc)));
  } catch (const kovactl::OutputError& error) {
    if (error.code().value() == EPIPE) {
      return static_cast<int>(ExitCode::success);
    }
    kovactl::report(error.what());
  } catch (const std::exception& error) {
    kovactl::report(error.what());
  }
  return static_cast<int>(ExitCode::item_failed);
}
