// `kovactl capability`: the module's own document.
#include "tools/host/system/json_writer.h"
#include "tools/kovactl/command_support.h"
#include "tools/kovactl/output.h"

namespace kovactl {

using namespace kova_host;
namespace {

ExitCode run_capability(const GlobalOptions& globals, bool compact) {
  const auto session = open_session(globals);
  print(json_document(session->capability().get(),
                      compact ? JsonLayout::one_line : JsonLayout::indented));
  return ExitCode::success;
}

}  // namespace

void add_capability(CommandLine& line) {
  auto compact = std::make_shared<bool>(false);
  CLI::App& command = line.add(
      {"capability", "Print the capability document", "kovactl --simulate capability --compact"},
      [compact](const GlobalOptions& globals) { return run_capability(globals, *compact); });
  command.add_flag("--compact", *compact, "Print it on one line");
}

}  // namespace kovactl
