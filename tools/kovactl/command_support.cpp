// What commands have in common: the start, reading with progress, the exit code at the end.
#include "tools/kovactl/command_support.h"

#include <fmt/format.h>

#include <algorithm>

#include "tools/host/plain_text.h"
#include "tools/kovactl/output.h"
#include "tools/kovactl/progress.h"

namespace kovactl {

std::unique_ptr<Session> open_session(const GlobalOptions& globals) {
  const Progress progress("starting the module");
  return std::make_unique<Session>(globals.host);
}

Readings read_with_progress(const Session& session, const std::vector<Item>& items) {
  Progress progress("reading", items.size());
  return *read_items(session, items, [&progress](const Item& item) {
    progress.advance(item);
    return true;
  });
}

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

std::string title(const Item& item) {
  const std::string name = printable(item.name);
  return name.empty() ? id_text(item.id) : id_text(item.id) + ' ' + name;
}

uint32_t checked_id(const std::string& text) {
  const auto id = parse_item_id(text);
  if (!id) {
    throw HostError(Fault::usage, fmt::format("'{}' is no item ID", text));
  }
  return *id;
}

}  // namespace kovactl
