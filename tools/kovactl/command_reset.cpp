// `kovactl reset`: writes factory defaults back.
#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "tools/host/system/typed_number.h"
#include "tools/host/values/shown_value.h"
#include "tools/host/values/typed_value.h"
#include "tools/kovactl/command_support.h"
#include "tools/kovactl/output.h"
#include "tools/kovactl/write_report.h"

namespace kovactl {

using namespace kova_host;
namespace {

struct ResetOptions {
  Selection selection;
  WriteOptions write;
};

std::vector<Item> with_default(const std::vector<Item>& items) {
  std::vector<Item> result;
  std::copy_if(items.begin(), items.end(), std::back_inserter(result),
               [](const Item& item) { return item.facts.factory_default.has_value(); });
  return result;
}

// Settings that a pattern names beside others, and that stay as they are.
void tell_of_settings_without_default(const std::vector<Item>& named) {
  std::vector<std::string> names;
  for (const Item& item : named) {
    if (item.facts.role == Role::setting && !item.facts.factory_default) {
      names.push_back(name_or_path(item));
    }
  }
  if (!names.empty()) {
    report(
        fmt::format("without a factory default, and left as they are: {}", fmt::join(names, ", ")));
  }
}

std::vector<Item> items_to_reset(const std::vector<Item>& items, const Selection& selection) {
  std::vector<Item> result;
  for (const std::string& text : selection.texts) {
    const std::vector<Item> named = select(items, {{text}, selection.families});
    const std::vector<Item> ours = with_default(named);
    if (ours.empty()) {
      throw HostError(Fault::usage, fmt::format("'{}' has no factory default", text));
    }
    tell_of_settings_without_default(named);
    std::copy(ours.begin(), ours.end(), std::back_inserter(result));
  }
  if (selection.texts.empty()) {
    const std::vector<Item> named = select(items, selection);
    result = with_default(named);
    if (result.empty()) {
      throw HostError(Fault::usage, fmt::format("{} has no factory defaults",
                                                fmt::join(selection.families, ", ")));
    }
    tell_of_settings_without_default(named);
  }
  return distinct(result);
}

std::optional<Number> number_of(const Item& item, const Reading& reading) {
  if (const auto* integer = std::get_if<int64_t>(&reading.value)) {
    return *integer;
  }
  if (const auto* real = std::get_if<double>(&reading.value)) {
    return item.facts.scale ? nearest_held(*real, *item.facts.scale) : *real;
  }
  return std::nullopt;
}

ExitCode run_reset(const GlobalOptions& globals, const ResetOptions& options) {
  if (options.selection.texts.empty() && options.selection.families.empty()) {
    throw HostError(Fault::usage, "ITEM or --family is required (see kovactl reset --help)");
  }
  const auto session = open_session(globals);
  const Inventory inventory = Inventory::of(*session);
  std::vector<PlannedWrite> plans;
  // All defaults are read before the first is written back.
  for (const Item& item : items_to_reset(inventory.items(), options.selection)) {
    const Item* factory_default = inventory.find(*item.facts.factory_default);
    const Reading reading =
        factory_default == nullptr ? Reading() : read_item(*session, *factory_default);
    const auto number = number_of(item, reading);
    if (!number) {
      throw HostError(
          Fault::item,
          fmt::format("the factory default of {} cannot be read: {}; nothing was written",
                      path_of(item), failure_text(item, reading)),
          reading.status);
    }
    plans.push_back({item, *number, ""});
  }
  return write_and_report(globals, *session, plans, options.write);
}

}  // namespace

void add_reset(CommandLine& line) {
  auto options = std::make_shared<ResetOptions>();
  CLI::App& command =
      line.add({"reset", "Write the factory defaults of settings back",
                "kovactl --simulate reset 'PIC/Settings/*' --dry-run"},
               [options](const GlobalOptions& globals) { return run_reset(globals, *options); });
  add_selection(command, options->selection);
  add_write_options(command, options->write);
}

}  // namespace kovactl
