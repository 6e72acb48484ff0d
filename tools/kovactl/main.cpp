// kovactl: the module's items at the command line. A host like any agent, through the C interface.
#include <cerrno>
#include <csignal>
#include <exception>
#include <string>
#include <vector>

#include "tools/host/export/json_report.h"
#include "tools/host/judgements/monitoring_check.h"
#include "tools/host/session/worker.h"
#include "tools/host/system/descriptor_output.h"
#include "tools/host/system/json_writer.h"
#include "tools/kovactl/commands.h"
#include "tools/kovactl/device_use.h"
#include "tools/kovactl/output.h"
#include "tools/kovactl/signals.h"

namespace {

using kovactl::ExitCode;

// {"ok": false, "error": {"message": ..., "exit_code": ...}}
kova_host::JsonPtr error_document(const kova_host::HostError& error) {
  kova_host::JsonPtr document = kova_host::json_error(error);
  json_object_set_new(json_object_get(document.get(), "error"), "exit_code",
                      json_integer(static_cast<int>(kovactl::exit_code_of(error))));
  return document;
}

// In the form that the arguments ask for.
ExitCode tell(const kova_host::HostError& error, const kovactl::CommandLine& line,
              const std::vector<std::string>& arguments) {
  kovactl::report(error.what());
  if (line.command_in(arguments) == "check") {
    // To who asks for it, trouble is a state like any other.
    const kova_host::CheckResult result = kova_host::check_unknown(error.what());
    kovactl::print(result.text);
    return static_cast<ExitCode>(result.state);
  }
  if (kovactl::asks_for_json(arguments)) {
    // On one line, as any document of `watch`.
    kovactl::print(
        kova_host::json_document(error_document(error).get(), kova_host::JsonLayout::one_line));
  }
  return kovactl::exit_code_of(error);
}

ExitCode run(const std::vector<std::string>& arguments) {
  kovactl::CommandLine line;
  kovactl::add_commands(line);
  try {
    auto parsed = line.parse(arguments);
    if (parsed.answer) {
      kovactl::print(*parsed.answer);
      return ExitCode::success;
    }
    kovactl::DeviceUse device(parsed.globals);
    parsed.globals.device = &device;
    const ExitCode code = parsed.run(parsed.globals);
    device.report_end();
    return code == ExitCode::success && device.anything_died() ? ExitCode::item_failed : code;
  } catch (const kova_host::CallGivenUp&) {
    kovactl::die_of(kovactl::signal_that_came());
  } catch (const kova_host::HostError& error) {
    return tell(error, line, arguments);
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (const auto code = kova_host::run_if_worker(argc, argv)) {
    return *code;
  }
  // A reader that has seen enough shows as EPIPE instead, and the module is shut down in order.
  (void)std::signal(SIGPIPE, SIG_IGN);
  try {
    return static_cast<int>(run(std::vector<std::string>(argv + 1, argv + argc)));
  } catch (const kova_host::OutputError& error) {
    if (error.code().value() == EPIPE) {
      return static_cast<int>(ExitCode::success);
    }
    kovactl::report(error.what());
  } catch (const std::exception& error) {
    kovactl::report(error.what());
  }
  return static_cast<int>(ExitCode::item_failed);
}
