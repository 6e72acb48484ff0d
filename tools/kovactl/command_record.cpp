// `kovactl record`: what the device library answers, as a machine description to replay.
#include <fmt/format.h>

#include <algorithm>
#include <set>

#include "tools/host/record/recording.h"
#include "tools/host/system/duration.h"
#include "tools/host/system/plain_text.h"
#include "tools/host/system/regular_file.h"
#include "tools/host/system/typed_number.h"
#include "tools/kovactl/command_support.h"
#include "tools/kovactl/output.h"
#include "tools/kovactl/progress.h"

namespace kovactl {

using namespace kova_host;
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

struct RecordOptions {
  std::string file;
  Selection selection;
  std::string interval;
  std::string count;
  std::string length;
  bool redact = false;
};

// When samples are taken: `count` of them, 0 for no end.
struct Plan {
  milliseconds interval{1000};
  uint64_t count = 1;
};

constexpr milliseconds kShortest{50};  // between two samples

Plan plan_of(const RecordOptions& options) {
  Plan plan;
  if (!options.interval.empty()) {
    plan.interval = checked_duration(options.interval, "interval", kShortest);
    plan.count = 0;
  }
  if (!options.count.empty()) {
    const auto count = parse_item_id(options.count);
    if (!count || *count == 0) {
      throw HostError(Fault::usage, fmt::format("'{}' is no number of samples", options.count));
    }
    plan.count = *count;
  }
  if (!options.length.empty()) {
    const milliseconds length = checked_duration(options.length, "length", kShortest);
    plan.count = static_cast<uint64_t>((length + plan.interval - milliseconds(1)) / plan.interval);
  }
  return plan;
}

struct Result {
  uint64_t samples = 0;
  size_t items = 0;
  std::set<uint32_t> failed;  // items that failed in any sample
  milliseconds length{0};
  std::optional<std::string> trouble;
};

// Takes samples until the plan, a signal or the recording itself ends it. Times are the plan's
// own, from the first sample on, so that a replay that is sampled alike shows the same.
class Sampling {
 public:
  Sampling(const Recording& recording, const Plan& plan, const DeviceUse& device)
      : recording_(recording), plan_(plan), device_(device) {}

  void run(const Session& session, const std::vector<Item>& items, Result& result) {
    Progress progress("recording, Ctrl-C ends it", plan_.count > 1 ? plan_.count : 0);
    const auto start = steady_clock::now();
    auto next = start;
    SweepPlan sweeps(items);
    result.items = items.size();
    for (;;) {
      const auto began = steady_clock::now();
      const Readings readings = sweep_items(session, sweeps, began.time_since_epoch());
      ++result.samples;
      for (const auto& [id, reading] : readings) {
        if (reading.state == Reading::State::failed) {
          result.failed.insert(id);
        }
      }
      progress.advance();
      result.trouble = recording_.trouble();
      next = next_sweep(next, plan_.interval, began, steady_clock::now());
      result.length = std::chrono::duration_cast<milliseconds>(next - start);
      if (result.trouble || result.samples == plan_.count || wait_until(device_, next)) {
        break;
      }
      recording_.set_time(result.length);
    }
    recording_.set_time(result.length);
  }

 private:
  const Recording& recording_;
  const Plan& plan_;
  const DeviceUse& device_;
};

std::unique_ptr<Session> started(const std::shared_ptr<WorkerHost>& host, bool simulated) {
  const Progress progress("starting the module");
  return std::make_unique<Session>(host, simulated);
}

void print_result(const Result& result, const std::string& file) {
  std::string text = fmt::format("{}: {} sample{} of {} items", printable(file), result.samples,
                                 result.samples == 1 ? "" : "s", result.items);
  if (result.samples > 1) {
    text += " over " + duration_text(result.length);
  }
  if (!result.failed.empty()) {
    text += fmt::format("; {} of them could not be read{}, which is recorded too",
                        result.failed.size(), result.samples > 1 ? " in at least one sample" : "");
  }
  print(text + "\n");
}

// What to add to the message about an early end.
std::string kept(const std::optional<std::string>& trouble, const std::string& file) {
  return trouble ? "; " + *trouble : fmt::format("; {} has what was answered", printable(file));
}

// Records, and keeps what was answered where the device, or the user, ends it early.
ExitCode record(const GlobalOptions& globals, const RecordOptions& options, const Plan& plan,
                const std::shared_ptr<WorkerHost>& host, Recording& recording) {
  Result result;
  std::optional<std::string> trouble;
  try {
    const auto session = started(host, globals.host.simulate);
    const std::vector<Item> items =
        select_distinct(Inventory::of(*session).items(), options.selection);
    Sampling(recording, plan, *globals.device).run(*session, items, result);
    trouble = recording.finish();
  } catch (const WorkerDeath& death) {
    throw HostError(death.fault(),
                    death.what() + kept(recording.finish_without_worker(), options.file));
  } catch (const CallGivenUp& call) {
    trouble = recording.finish_without_worker();
    if (result.samples == 0 || call.waited() >= std::chrono::seconds(1)) {
      report(interruption_text(call) + kept(trouble, options.file));
      return ExitCode::item_failed;
    }
  } catch (const HostError& error) {
    // A machine on which nothing is found is worth a recording all the more.
    if (error.fault() == Fault::no_device) {
      throw HostError(Fault::no_device, error.what() + kept(recording.finish(), options.file),
                      error.status());
    }
    throw;
  }
  if (trouble) {
    report(*trouble);
    return ExitCode::item_failed;
  }
  print_result(result, options.file);
  return ExitCode::success;
}

ExitCode run_record(const GlobalOptions& globals, const RecordOptions& options) {
  if (options.file == kStandardStream) {
    throw HostError(Fault::usage,
                    "a recording is written piece by piece into a file and cannot go to stdout: "
                    "name a file, ./- for one of that name");
  }
  const Plan plan = plan_of(options);
  globals.device->let_command_end();
  const auto host = globals.device->host();
  Recording recording(host, globals.host, {options.file, options.redact});
  return record(globals, options, plan, host, recording);
}

}  // namespace

void add_record(CommandLine& line) {
  auto options = std::make_shared<RecordOptions>();
  CLI::App& command = line.add(
      {"record", "Record this machine, to be replayed with --simulate FILE",
       "kovactl record machine.json --for 10m --redact",
       "0 recorded, also where items failed, 1 the recording is not whole, 2 usage, 3 no device"},
      [options](const GlobalOptions& globals) { return run_record(globals, *options); });
  command.add_option("FILE", options->file, "The machine description to write")->required();
  add_selection(command, options->selection);
  command
      .add_option("--interval", options->interval,
                  "Time between samples (default 1s); without --count or --for until Ctrl-C")
      ->type_name("TIME");
  auto* count = command.add_option("--count", options->count, "Take so many samples (default 1)")
                    ->type_name("N");
  command.add_option("--for", options->length, "Take samples for so long, such as 10m or 1h30m")
      ->type_name("TIME")
      ->excludes(count);
  command.add_flag("--redact", options->redact,
                   "Blank serial numbers, part numbers and vendor data");
}

}  // namespace kovactl
