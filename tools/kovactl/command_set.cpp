// `kovactl set`: writes items.
#include <fmt/format.h>

#include <algorithm>

#include "tools/host/values/typed_value.h"
#include "tools/kovactl/command_support.h"
#include "tools/kovactl/write_report.h"

namespace kovactl {

using namespace kova_host;
namespace {

struct SetOptions {
  std::vector<std::string> words;  // ITEM VALUE, or ITEM=VALUE ...
  WriteOptions write;
  bool unlisted = false;
};

struct Assignment {
  std::string item;
  std::string value;
};

// Names have no "=", so the first one parts item and value.
std::vector<Assignment> assignments(const std::vector<std::string>& words) {
  if (words.size() == 2 && words[0].find('=') == std::string::npos) {
    return {{words[0], words[1]}};
  }
  std::vector<Assignment> result;
  for (const std::string& word : words) {
    const size_t at = word.find('=');
    if (at == std::string::npos) {
      throw HostError(Fault::usage,
                      fmt::format("'{}' is no ITEM=VALUE (see kovactl set --help)", word));
    }
    result.push_back({word.substr(0, at), word.substr(at + 1)});
  }
  return result;
}

// Defaults and readings share names with settings; only one of them can be meant here.
Item item_to_write(const std::vector<Item>& items, const std::string& text) {
  std::vector<Item> settings;
  for (const Item& item : named_items(items, text)) {
    if (item.facts.role == Role::setting) {
      settings.push_back(item);
    }
  }
  return settings.size() == 1 ? settings.front() : select_one(items, text);
}

// The module hands a write to an ID that it does not know to a device code all the same, and the
// device may well take it: a slip of the pen would be written somewhere, and be called written.
void require_listed(const std::vector<Item>& items, const Item& item) {
  if (std::none_of(items.begin(), items.end(),
                   [&item](const Item& listed) { return listed.id == item.id; })) {
    throw HostError(Fault::usage, fmt::format("this machine lists no item {}; --unlisted writes to "
                                              "it all the same, whatever the device has there",
                                              id_text(item.id)));
  }
}

ExitCode run_set(const GlobalOptions& globals, const SetOptions& options) {
  const std::vector<Assignment> wanted = assignments(options.words);
  const auto session = open_session(globals);
  const Inventory inventory = Inventory::of(*session);
  std::vector<PlannedWrite> plans;
  for (const Assignment& assignment : wanted) {
    const Item item = item_to_write(inventory.items(), assignment.item);
    if (!options.unlisted) {
      require_listed(inventory.items(), item);
    }
    require_writable(inventory.items(), item);
    plans.push_back({item, value_to_set(item, assignment.value), assignment.value});
  }
  return write_and_report(globals, *session, plans, options.write);
}

}  // namespace

void add_set(CommandLine& line) {
  auto options = std::make_shared<SetOptions>();
  CLI::App& command =
      line.add({"set", "Write items", "kovactl --simulate set 'PoE 1 power=off' 0x14160711=10s"},
               [options](const GlobalOptions& globals) { return run_set(globals, *options); });
  command
      .add_option("ASSIGNMENT", options->words,
                  "Items by ID, name or path, each with a number, a number with its unit, or the "
                  "label of an option; all are checked before the first is written. ITEM VALUE "
                  "does for one")
      ->type_name("ITEM=VALUE")
      ->required();
  command.add_flag("--unlisted", options->unlisted,
                   "Write to IDs that this machine does not list too");
  add_write_options(command, options->write);
}

}  // namespace kovactl
