// `kovactl list-recording`, for kovactl itself: a recording as it is at one time, in the form of
// list --json, with "later": what fails after it. Another machine description is listed as ever.
#include "tools/host/export/json_report.h"
#include "tools/host/record/listing.h"
#include "tools/host/system/json_writer.h"
#include "tools/kovactl/command_support.h"
#include "tools/kovactl/output.h"

namespace kovactl {

using namespace kova_host;
namespace {

RecordedListing listing_at(const Module& module, const HostOptions& host, const std::string& at) {
  std::optional<Replay> replay;
  try {
    replay.emplace(host);
  } catch (const HostError&) {
    if (!at.empty()) {
      throw;
    }
  }
  const Session session(module, true);
  if (!replay) {
    return {list_machine(session), {}};
  }
  const auto time = at.empty() ? std::chrono::milliseconds(0)
                               : checked_duration(at, "time", std::chrono::milliseconds(0));
  return list_recording(*replay, session, time);
}

ExitCode run_list_recording(const GlobalOptions& globals, const std::string& at) {
  const Module module(globals.host);
  const RecordedListing recorded = listing_at(module, globals.host, at);
  JsonPtr items = own(json_array());
  for (const ListedItem& listed : recorded.listing) {
    append(items, json_item(listed.item, listed.reading));
  }
  JsonPtr later = own(json_array());
  for (const LaterFailure& failure : recorded.later) {
    JsonPtr entry = own(json_object());
    put(entry, "id", json_text(id_text(failure.id)));
    put(entry, "ms", own(json_integer(failure.time.count())));
    put(entry, "code", own(json_integer(failure.status)));
    append(later, std::move(entry));
  }
  JsonPtr document = own(json_object());
  put(document, "items", std::move(items));
  put(document, "later", std::move(later));
  print(json_document(document.get(), JsonLayout::one_line));
  return ExitCode::success;
}

}  // namespace

void add_list_recording(CommandLine& line) {
  auto at = std::make_shared<std::string>();
  auto json = std::make_shared<bool>(false);  // as it prints anyway
  CLI::App& command = line.add({"list-recording", "List a recording at one time",
                                "kovactl --simulate machine.json list-recording --at 10m"},
                               [at, json](const GlobalOptions& globals) {
                                 return run_list_recording(globals, *at);
                               });
  command.group("");  // not among the commands in the help
  command.add_option("--at", *at, "Time since the beginning")->type_name("TIME");
  command.add_flag("--json", *json, "Print JSON, errors too");
}

}  // namespace kovactl
