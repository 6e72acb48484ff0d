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

namespace kovactl {

using namespace kova_host;

bool wait_until(Attendant& attendant, std::chrono::steady_clock::time_point time) {
  using std::chrono::ceil, std::chrono::milliseconds, std::chrono::steady_clock;
  pollfd descriptor = {attendant.interruption().descriptor(), POLLIN, 0};
  while (!attendant.interrupted()) {
    const auto rest = ceil<milliseconds>(time - steady_clock::now()).count();
    if (rest <= 0) {
      break;
    }
    poll(&descriptor, 1, static_cast<int>(std::min<int64_t>(rest, 60'000)));
  }
  return attendant.interrupted();
}

KeptOnExit::KeptOnExit(Attendant& attendant, Attendant::BeforeExit keep) : attendant_(attendant) {
  attendant.let_command_end();
  attendant.end_with(ExitCode::item_failed);
  attendant.before_exit(std::move(keep));
}

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

std::optional<Readings> sweep_unless_interrupted(const Session& session, SweepPlan& plan,
                                                 SweepPlan::Time now, const Attendant& attendant) {
  return sweep_items(session, plan, now,
                     [&attendant](const Item&) { return !attendant.interrupted(); });
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
