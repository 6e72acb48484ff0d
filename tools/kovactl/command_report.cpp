// `kovactl report`: readings over a while, as a page in one file that opens anywhere.
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <utility>

#include "tools/host/record/replay_walk.h"
#include "tools/host/system/atomic_file.h"
#include "tools/host/system/descriptor_output.h"
#include "tools/host/system/duration.h"
#include "tools/host/system/host_name.h"
#include "tools/host/system/plain_text.h"
#include "tools/host/system/regular_file.h"
#include "tools/host/system/unix_time.h"
#include "tools/kovactl/command_support.h"
#include "tools/kovactl/output.h"
#include "tools/kovactl/progress.h"
#include "tools/kovactl/report_document.h"
#include "tools/page/single_file.h"

namespace kovactl {

using namespace kova_host;
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

struct ReportOptions {
  std::string file;
  std::string recording;
  std::string length;
  std::string interval;
};

constexpr milliseconds kSecond{1000};

milliseconds interval_of(const ReportOptions& options) {
  return options.interval.empty()
             ? kSecond
             : checked_duration(options.interval, "interval", milliseconds(50));
}

// The step in which lines are drawn, of three samples at most: with more of them the page grows
// slow, and the file too large to send.
milliseconds step_of(milliseconds length, milliseconds interval) {
  constexpr int64_t kMostSteps = 1200;
  const milliseconds least = length / kMostSteps;
  return std::max(interval,
                  least < kSecond ? least : std::chrono::ceil<std::chrono::seconds>(least));
}

// Where a report's readings come from, and how they got into it.
struct Course {
  kova_page::Machine machine;
  std::string source;  // for people
  milliseconds length{0};
  milliseconds interval{kSecond};
  milliseconds step{kSecond};  // of the lines
};

// The file to be.
class ReportFile {
 public:
  ReportFile(std::string file, Course course, const std::vector<Item>& items)
      : file_(std::move(file)),
        course_(std::move(course)),
        document_(items, static_cast<double>(course_.step.count()) / 1000) {}

  const Course& course() const { return course_; }

  // As ReportDocument's.
  template <typename... Arguments>
  void add(const Arguments&... arguments) {
    document_.add(arguments...);
  }

  // `early` tells why not all sweeps were made, "" if they were. Gives what the file has; throws
  // OutputError.
  std::string write(const std::string& early) {
    if (document_.sweeps() == 0) {
      return "the first sweep was not whole, and nothing is written";
    }
    const std::string sweeps =
        fmt::format("{} sweep{}", document_.sweeps(), document_.sweeps() == 1 ? "" : "s");
    const ReportDocument::Heading heading = {
        course_.machine,
        fmt::format("{}{}{}{}{}", sweeps, course_.source.empty() ? "" : " from ", course_.source,
                    drawn_text(), early.empty() ? "" : ". Ended early: " + early),
        unix_time(), static_cast<double>(std::max(course_.step, course_.interval).count()) / 1000};
    put(kova_page::single_file(document_.json(heading)));
    return fmt::format("{} has the {} until then",
                       file_ == kStandardStream ? "stdout" : printable(file_), sweeps);
  }

  // The same as what to add to the message about an early end.
  std::string keep(const std::string& early) {
    try {
      return "; " + write(early);
    } catch (const OutputError& error) {
      return std::string("; ") + error.what();
    }
  }

  size_t sweeps() const { return document_.sweeps(); }
  size_t failed_items() const { return document_.failed_items(); }

 private:
  void put(const std::string& page) const {
    if (file_ == kStandardStream) {
      print(page);
    } else {
      replace_file(file_, page);
    }
  }

  std::string drawn_text() const {
    return document_.is_thinned()
               ? fmt::format(
                     ". Lines are drawn in steps of {}, each by its lowest, its highest and "
                     "its last value",
                     duration_text(course_.step))
               : "";
  }

  const std::string file_;
  const Course course_;
  ReportDocument document_;
};

// Sweeps until the time is over, or Ctrl-C.
void watch(const Session& session, const std::vector<Item>& items, const DeviceUse& device,
           ReportFile& file) {
  const Course& course = file.course();
  Progress progress("sweep, Ctrl-C ends it",
                    static_cast<size_t>(course.length / course.interval + 1));
  SweepPlan sweeps(items);
  auto next = steady_clock::now();
  const auto end = next + course.length;
  do {
    const auto began = steady_clock::now();
    const Readings readings = sweep_items(session, sweeps, began.time_since_epoch());
    file.add(unix_time(), readings);
    progress.advance();
    next = next_sweep(next, course.interval, began, steady_clock::now());
  } while (next <= end && !wait_until(device, next));
}

// The same through a recording, at each of its moments, as fast as it can be read.
void walk(const Replay& replay, const Session& session, const std::vector<Item>& items,
          const DeviceUse& device, ReportFile& file) {
  ReplayWalk walk(replay, session, items, file.course().interval);
  Progress progress("sweep, Ctrl-C ends it", walk.size());
  while (!device.interrupted() && walk.next()) {
    file.add(replay.begin() + static_cast<double>(walk.time().count()) / 1000, walk.readings(),
             walk.fresh());
    progress.advance();
    draw_progress();
  }
}

std::string stem(const std::string& file) {
  return std::filesystem::path(file).stem().string();
}

Course live_course(const ReportOptions& options, const HostOptions& host) {
  Course course;
  const std::string simulated = host.machine ? stem(*host.machine) : "built-in";
  course.machine = {host_name(), host.simulate ? simulated : ""};
  course.length = options.length.empty()
                      ? milliseconds(60'000)
                      : checked_duration(options.length, "length", milliseconds(0));
  course.interval = interval_of(options);
  course.step = step_of(course.length, course.interval);
  return course;
}

Course recorded_course(const ReportOptions& options, const Replay& replay) {
  Course course;
  course.machine = {stem(options.recording), ""};
  const std::string file = std::filesystem::path(options.recording).filename().string();
  course.source = fmt::format("the recording {} of {}{}{}", file, duration_text(replay.length()),
                              replay.note().empty() ? "" : ". ", replay.note());
  course.length = replay.length();
  // Between its moments a recording is looked at so often; weeks of it less.
  constexpr int64_t kMostLooks = 100'000;
  course.interval = std::max(interval_of(options), course.length / kMostLooks);
  course.step = step_of(course.length, milliseconds(0));
  return course;
}

// Whatever fails in the end: not after minutes of reading.
void check_writable(const std::string& file) {
  try {
    require_replaceable(file);
  } catch (const OutputError& error) {
    throw HostError(Fault::usage, error.what());
  }
}

// Reads and writes; `read` makes the sweeps. What was read is kept where the device, or the user,
// ends it early.
template <typename Read>
ExitCode make_report(const Session& session, const DeviceUse& device, const std::string& name,
                     const Course& course, const Read& read) {
  const Inventory inventory = Inventory::of(session);
  const std::vector<Item> items = distinct(inventory.items());
  ReportFile file(name, course, inventory.items());
  std::string early;
  bool unanswered = false;
  try {
    read(items, file);
    early = device.interrupted() ? "interrupted" : "";
  } catch (const WorkerDeath& death) {
    throw HostError(death.fault(), death.what() + file.keep(death.what()));
  } catch (const CallGivenUp& call) {
    early = interruption_text(call);
    unanswered = call.waited() >= std::chrono::seconds(1);
  }
  const std::string content = file.write(early);
  if (!early.empty()) {
    report(early + "; " + content);
  }
  if (file.failed_items() > 0) {
    report(fmt::format("{} of {} items failed in at least one sweep, as the report tells",
                       file.failed_items(), items.size()));
  }
  return unanswered || file.sweeps() == 0 || file.failed_items() > 0 ? ExitCode::item_failed
                                                                     : ExitCode::success;
}

ExitCode report_live(const GlobalOptions& globals, const ReportOptions& options) {
  const Course course = live_course(options, globals.host);
  DeviceUse& device = *globals.device;
  const auto session = open_session(globals);
  device.let_command_end();
  return make_report(*session, device, options.file, course,
                     [&](const std::vector<Item>& items, ReportFile& file) {
                       watch(*session, items, device, file);
                     });
}

ExitCode report_recording(const GlobalOptions& globals, const ReportOptions& options) {
  const HostOptions source{globals.host.module, true, options.recording};
  DeviceUse& device = *globals.device;
  const auto host = device.host();
  const Replay replay(host, source);
  const Session session(host, true);
  device.let_command_end();
  return make_report(session, device, options.file, recorded_course(options, replay),
                     [&](const std::vector<Item>& items, ReportFile& file) {
                       walk(replay, session, items, device, file);
                     });
}

ExitCode run_report(const GlobalOptions& globals, const ReportOptions& options) {
  if (options.file != kStandardStream) {
    check_writable(options.file);
  }
  if (options.recording.empty()) {
    return report_live(globals, options);
  }
  if (globals.host.simulate) {
    throw HostError(Fault::usage, "--from names the machine; --simulate names another one");
  }
  if (options.recording == kStandardStream) {
    throw HostError(Fault::usage, "a recording is read more than once and needs a file, not stdin");
  }
  return report_recording(globals, options);
}

}  // namespace

void add_report(CommandLine& line) {
  auto options = std::make_shared<ReportOptions>();
  CLI::App& command =
      line.add({"report", "Write readings and charts into one HTML file",
                "kovactl report bus-042.html --for 5m",
                "0 all well, 1 an item failed in some sweep, 2 usage, 3 no device"},
               [options](const GlobalOptions& globals) { return run_report(globals, *options); });
  command
      .add_option("FILE", options->file,
                  "The file to write, as a whole or not at all; - for stdout")
      ->required();
  auto* from = command
                   .add_option("--from", options->recording,
                               "Show this recording instead of the machine at hand")
                   ->type_name("RECORDING");
  command.add_option("--for", options->length, "How long to read (default 1m); 0 for once")
      ->type_name("TIME")
      ->excludes(from);
  command
      .add_option("--interval", options->interval,
                  "Time between sweeps (default 1s); a recording is read at each moment too")
      ->type_name("TIME");
}

}  // namespace kovactl
