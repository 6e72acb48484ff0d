// `kovactl get`: the values of single items.
#include <fmt/format.h>

#include <algorithm>

#include "tools/host/export/json_report.h"
#include "tools/host/judgements/finding_json.h"
#include "tools/host/system/json_writer.h"
#include "tools/host/system/plain_text.h"
#include "tools/host/values/shown_value.h"
#include "tools/kovactl/command_support.h"
#include "tools/kovactl/output.h"

namespace kovactl {

using namespace kova_host;
namespace {

struct GetOptions {
  Selection selection;
  bool value_only = false;
  bool json = false;
};

std::string get_text(const std::vector<Item>& items, const Judged& judged, bool value_only) {
  size_t width = 0;
  for (const Item& item : items) {
    width = std::max(width, display_width(title(item)));
  }
  std::string text;
  for (const Item& item : items) {
    const Reading& reading = judged.readings.at(item.id);
    if (value_only) {
      text += plain_value(reading) + '\n';
      continue;
    }
    text += padded(title(item), width) + "  " + value_with_unit(item, reading);
    const std::string mark = marks_on(item.id, judged.findings);
    text += (mark.empty() ? "" : "  " + mark) + '\n';
  }
  return text;
}

ExitCode run_get(const GlobalOptions& globals, const GetOptions& options) {
  if (options.selection.texts.empty() && options.selection.families.empty()) {
    throw HostError(Fault::usage, "ITEM or --family is required (see kovactl get --help)");
  }
  const auto session = open_session(globals);
  const Inventory inventory = Inventory::of(*session);
  const std::vector<Item> items = select_distinct(inventory.items(), options.selection);
  const Judged judged = read_and_judge(*session, items, inventory.items(), {});
  if (options.json) {
    const JsonPtr document = json_items(items, judged.readings);
    put(document, "findings", json_findings(judged.findings));
    print(json_document(document.get(), JsonLayout::indented));
  } else {
    print(get_text(items, judged, options.value_only));
  }
  report_failures(items, judged.readings);
  return any_failed(judged.readings) ? ExitCode::item_failed : ExitCode::success;
}

}  // namespace

void add_get(CommandLine& line) {
  auto options = std::make_shared<GetOptions>();
  CLI::App& command =
      line.add({"get", "Read items", "kovactl --simulate get 0x14140B01 'TRK7K OB fan ?'"},
               [options](const GlobalOptions& globals) { return run_get(globals, *options); });
  add_selection(command, options->selection);
  command.add_flag("--value-only", options->value_only, "Print the bare values, one a line");
  command.add_flag("--json", options->json, "Print JSON, with a status for every item");
}

}  // namespace kovactl
