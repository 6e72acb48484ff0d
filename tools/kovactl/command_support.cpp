// What commands have in common: the start, reading with progress, the exit code at the end.
#include "tools/kovactl/command_support.h"

#include <fmt/format.h>
#include <poll.h>

#include <algorithm>
#include <set>
#include <utility>

#include "tools/host/system/plain_text.h"
#include "tools/host/values/shown_value.h"
#include "tools/kovactl/output.h"
#include "tools/kovactl/progress.h"
#include "tools/kovactl/signals.h"

namespace kovactl {

using namespace kova_host;

bool wait_until(const DeviceUse& device, std::chrono::steady_clock::time_point time) {
  using std::chrono::ceil, std::chrono::milliseconds, std::chrono::steady_clock;
  constexpr int64_t kTickMilliseconds = 200;  // for the progress
  pollfd descriptor = {signal_descriptor(), POLLIN, 0};
  while (!device.interrupted()) {
    draw_progress();
    const auto rest = ceil<milliseconds>(time - steady_clock::now()).count();
    if (rest <= 0) {
      break;
    }
    poll(&descriptor, 1, static_cast<int>(std::min(rest, kTickMilliseconds)));
  }
  return device.interrupted();
}

std::string interruption_text(const CallGivenUp& call) {
  return call.waited() < std::chrono::seconds(1)
             ? "interrupted"
             : fmt::format("interrupted while {} did not answer", subject_text(call.subject()));
}

std::unique_ptr<Session> open_session(const GlobalOptions& globals) {
  return globals.device->start(globals.host);
}

Readings read_with_progress(const Session& session, const std::vector<Item>& items) {
  const Progress progress("reading", distinct(items));
  return read_items(session, items);
}

Judged read_and_judge(const Session& session, const std::vector<Item>& items,
                      const std::vector<Item>& known, const Thresholds& thresholds) {
  const std::vector<Item> read = with_companions(distinct(items), distinct(known));
  Judged judged{read_with_progress(session, read), {}};
  judged.findings = judge_selected(items, read, judged.readings, thresholds);
  std::set<uint32_t> wanted;
  for (const Item& item : items) {
    wanted.insert(item.id);
  }
  std::erase_if(judged.readings,
                [&wanted](const auto& entry) { return !wanted.contains(entry.first); });
  return judged;
}

void add_rules_option(CLI::App& command, std::string& file) {
  command
      .add_option("--rules", file,
                  "Judge by the rules of docs/fleet.md with this file's changes to them")
      ->type_name("FILE");
}

RulesFile rules_from(const std::string& file) {
  return file.empty() ? RulesFile() : read_rules_file(file);
}

void report_failures(const std::vector<Item>& items, const Readings& readings) {
  for (const Item& item : distinct(items)) {
    const Reading& reading = readings.at(item.id);
    if (reading.state == Reading::State::failed) {
      report(fmt::format("{}{}{} {}", item.missing ? "" : "cannot read ", title(item),
                         item.missing ? " is" : ":", failure_text(item, reading)));
    }
  }
}

ExitCode verdict(const std::vector<Item>& items, const Readings& readings) {
  report_failures(items, readings);
  const auto failed = std::count_if(readings.begin(), readings.end(), [](const auto& entry) {
    return entry.second.state == Reading::State::failed;
  });
  if (failed == 0) {
    return ExitCode::success;
  }
  if (readings.size() > 1) {
    report(fmt::format("{} of {} items could not be read", failed, readings.size()));
  }
  return ExitCode::item_failed;
}

std::string title(const Item& item) {
  return item.name.empty() ? id_text(item.id) : id_text(item.id) + ' ' + printable(path_of(item));
}

void add_selection(CLI::App& command, Selection& selection) {
  command.add_option("ITEM", selection.texts,
                     "Items by ID, name, pattern ('PoE * current') or path FAMILY/PACKAGE/NAME");
  command.add_option("--family", selection.families, "Items of this family only; may be repeated")
      ->type_name("NAME")
      ->allow_extra_args(false);
}

}  // namespace kovactl
