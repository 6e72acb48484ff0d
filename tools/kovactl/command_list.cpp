// `kovactl list`: everything the machine offers, with its values.
#include <fmt/format.h>
#include <unistd.h>

#include "tools/host/json_report.h"
#include "tools/host/json_writer.h"
#include "tools/kovactl/command_support.h"
#include "tools/kovactl/output.h"
#include "tools/kovactl/table.h"

namespace kovactl {
namespace {

struct Options {
  std::string family;  // "" for all
  bool json = false;
};

std::vector<Item> chosen_items(const Catalogue& catalogue, const std::string& family) {
  if (family.empty()) {
    return catalogue.items();
  }
  std::vector<Item> items = catalogue.family_items(family);
  if (items.empty()) {
    throw HostError(Fault::usage, fmt::format("no family '{}' on this machine, only: {}", family,
                                              fmt::join(catalogue.family_names(), ", ")));
  }
  return items;
}

ExitCode run(const GlobalOptions& globals, const Options& options) {
  const auto session = open_session(globals);
  const Catalogue catalogue = Catalogue::from_document(session->capability().get());
  const std::vector<Item> items = chosen_items(catalogue, options.family);
  const Readings readings = read_with_progress(*session, items);
  if (options.json) {
    print(json_document(json_items(items, readings).get(), JsonLayout::indented));
  } else {
    print(item_table(items, readings, Painter::for_stdout(), terminal_columns(STDOUT_FILENO)));
  }
  return verdict(readings);
}

}  // namespace

void add_list(CommandLine& line) {
  auto options = std::make_shared<Options>();
  CLI::App& command =
      line.add({"list", "Show every item with its value", "kovactl --simulate list --family PIC"},
               [options](const GlobalOptions& globals) { return run(globals, *options); });
  command.add_option("--family", options->family, "Show this family only")->type_name("NAME");
  command.add_flag("--json", options->json, "Print JSON, with a status for every item");
}

}  // namespace kovactl
