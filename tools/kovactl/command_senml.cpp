// `kovactl senml`: all readings as a SenML pack.
#include <fmt/format.h>

#include "tools/host/export/senml.h"
#include "tools/host/system/json_writer.h"
#include "tools/host/system/unix_time.h"
#include "tools/kovactl/command_support.h"
#include "tools/kovactl/output.h"

namespace kovactl {

using namespace kova_host;
namespace {

struct SenmlOptions {
  Selection selection;
  std::string base_name;  // "" for the machine's own
  bool compact = false;
};

ExitCode run_senml(const GlobalOptions& globals, const SenmlOptions& options) {
  if (!options.base_name.empty() && !is_senml_name(options.base_name)) {
    throw HostError(Fault::usage, fmt::format("'{}' is no SenML base name", options.base_name));
  }
  const auto session = open_session(globals);
  const std::vector<Item> items =
      select_distinct(Inventory::of(*session).items(), options.selection);
  const Readings readings = read_with_progress(*session, items);
  const std::string base = options.base_name.empty() ? machine_base_name() : options.base_name;
  const JsonPtr pack = senml_pack(items, readings, base, unix_time());
  print(json_document(pack.get(), options.compact ? JsonLayout::one_line : JsonLayout::indented));
  return verdict(items, readings);
}

}  // namespace

void add_senml(CommandLine& line) {
  auto options = std::make_shared<SenmlOptions>();
  CLI::App& command =
      line.add({"senml", "Print all readings as a SenML pack", "kovactl --simulate senml"},
               [options](const GlobalOptions& globals) { return run_senml(globals, *options); });
  add_selection(command, options->selection);
  command.add_option("--base-name", options->base_name, "Name in front of every record's own")
      ->type_name("NAME");
  command.add_flag("--compact", options->compact, "Print it on one line");
}

}  // namespace kovactl
