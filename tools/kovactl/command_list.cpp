// `kovactl list` and `kovactl capability`: everything the machine offers.
#include <fmt/format.h>

#include <algorithm>

#include "commands.h"
#include "json_report.h"
#include "json_writer.h"
#include "output.h"
#include "table.h"

namespace kovactl {
namespace {

std::vector<Item> chosen_items(const Catalogue& catalogue, const std::string& family) {
  if (family.empty()) {
    return catalogue.items();
  }
  std::vector<Item> items = catalogue.family_items(family);
  if (items.empty()) {
    throw CommandError(ExitCode::usage,
                       fmt::format("no family '{}' on this machine, only: {}", family,
                                   fmt::join(catalogue.family_names(), ", ")));
  }
  return items;
}

}  // namespace

ExitCode verdict(const Readings& readings) {
  const auto failed = std::count_if(readings.begin(), readings.end(), [](const auto& entry) {
    return entry.second.state == Reading::State::failed;
  });
  if (failed == 0) {
    return ExitCode::success;
  }
  report(fmt::format("{} of {} items could not be read", failed, readings.size()));
  return ExitCode::item_failed;
}

ExitCode run_list(const Request& request) {
  const HostSession session(request.host);
  const Catalogue catalogue = Catalogue::from_document(session.capability().get());
  const std::vector<Item> items = chosen_items(catalogue, request.family);
  const Readings readings = read_items(session, items);
  if (request.json) {
    print(json_document(json_items(items, readings).get(), JsonLayout::indented));
  } else {
    print(item_table(items, readings, Painter::for_stdout()));
  }
  return verdict(readings);
}

ExitCode run_capability(const Request& request) {
  const HostSession session(request.host);
  print(json_document(session.capability().get(),
                      request.compact ? JsonLayout::one_line : JsonLayout::indented));
  return ExitCode::success;
}

}  // namespace kovactl
