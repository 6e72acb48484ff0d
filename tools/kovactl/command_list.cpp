// `kovactl list`: everything the machine offers, with its values.
#include <unistd.h>

#include "tools/host/export/csv.h"
#include "tools/host/export/json_report.h"
#include "tools/host/judgements/finding_json.h"
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
  std::string rules;     // file; "" for none
  std::string fields;    // of --csv; "" for all
  std::string order;     // a field; "" for the document's order
  bool json = false;
  bool csv = false;
};

std::vector<std::string> fields_of(const ListOptions& options) {
  return options.fields.empty() ? csv_fields() : parse_csv_fields(options.fields);
}

// What cannot be done must not cost a start of the module.
void check_layout(const ListOptions& options) {
  if (!options.fields.empty() && !options.csv) {
    throw HostError(Fault::usage, "--fields goes with --csv");
  }
  if (!options.order.empty() && !options.csv && !options.json) {
    throw HostError(Fault::usage,
                    "--sort goes with --csv or --json: the table stands by family and package");
  }
  fields_of(options);
  if (!options.order.empty()) {
    require_csv_field(options.order);
  }
}

void print_document(const ListOptions& options, const JsonPtr& document) {
  if (!options.order.empty()) {
    sort_list(document.get(), options.order);
  }
  print(options.csv ? csv_table(document.get(), fields_of(options))
                    : json_document(document.get(), JsonLayout::indented));
}

ExitCode run_list(const GlobalOptions& globals, const ListOptions& options) {
  check_layout(options);
  // A file that cannot be used must not cost a start of the module.
  const auto expected =
      options.expected.empty() ? std::vector<ListedItem>() : read_list_document(options.expected);
  const RulesFile rules = rules_from(options.rules);
  const auto session = open_session(globals);
  const std::vector<Item> known = with_missing(Inventory::of(*session).items(), expected);
  const std::vector<Item> items = select(known, options.selection);
  const Judged judged = read_and_judge(*session, items, known, thresholds_of(rules, known));
  if (options.json || options.csv) {
    const JsonPtr document = json_items(items, judged.readings);
    put(document, "findings", json_findings(judged.findings));
    print_document(options, document);
  } else {
    print(item_table(items, judged.readings, judged.findings, Painter::for_stdout(),
                     terminal_columns(STDOUT_FILENO)));
  }
  return verdict(items, judged.readings);
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
  add_rules_option(command, options->rules);
  CLI::Option* json =
      command.add_flag("--json", options->json, "Print JSON, with a status for every item");
  command.add_flag("--csv", options->csv, "Print comma-separated values with a header line")
      ->excludes(json);
  command
      .add_option("--fields", options->fields,
                  "With --csv: print these only, in this order, such as id,path,value,unit")
      ->type_name("FIELD,...");
  command
      .add_option("--sort", options->order,
                  "With --csv or --json: in the order of this field, numbers first")
      ->type_name("FIELD");
}

}  // namespace kovactl
