// `kovactl list`: everything the machine offers, with its values.
#include <unistd.h>

#include "tools/host/export/json_report.h"
#include "tools/host/record/listing_file.h"
#include "tools/host/system/json_writer.h"
#include "tools/kovactl/command_support.h"
#include "tools/kovactl/output.h"
#include "tools/kovactl/table.h"

namespace kovactl {

using namespace kova_host;
namespace {

struct ListOptions {
  Selection selection;
  std::string expected;  // file; "" for none
  bool json = false;
};

ExitCode run_list(const GlobalOptions& globals, const ListOptions& options) {
  // A file that cannot be used must not cost a start of the module.
  const auto expected =
      options.expected.empty() ? std::vector<ListedItem>() : read_list_document(options.expected);
  const auto session = open_session(globals);
  const std::vector<Item> known = with_missing(Inventory::of(*session).items(), expected);
  const std::vector<Item> items = select(known, options.selection);
  const Readings readings = read_with_progress(*session, items);
  if (options.json) {
    print(json_document(json_items(items, readings).get(), JsonLayout::indented));
  } else {
    print(item_table(items, readings, Painter::for_stdout(), terminal_columns(STDOUT_FILENO)));
  }
  return verdict(items, readings);
}

}  // namespace

void add_list(CommandLine& line) {
  auto options = std::make_shared<ListOptions>();
  CLI::App& command =
      line.add({"list", "Show every item with its value", "kovactl --simulate list --family PIC"},
               [options](const GlobalOptions& globals) { return run_list(globals, *options); });
  add_selection(command, options->selection);
  command
      .add_option("--expect", options->expected,
                  "Fail for each item that is missing since `list --json` printed this file")
      ->type_name("FILE");
  command.add_flag("--json", options->json, "Print JSON, with a status for every item");
}

}  // namespace kovactl
