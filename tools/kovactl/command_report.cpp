// `kovactl report`: readings over a while, as a page in one file that opens anywhere.
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>

#include "tools/exporter/page/single_file.h"
#include "tools/host/atomic_file.h"
#include "tools/host/duration.h"
#include "tools/host/replay.h"
#include "tools/host/unix_time.h"
#include "tools/kovactl/command_support.h"
#include "tools/kovactl/output.h"
#include "tools/kovactl/progress.h"
#include "tools/kovactl/report_document.h"

namespace kovactl {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

struct ReportOptions {
  std::string file;
  std::string recording;
  std::string length;
  std::string interval;
};

// Above this the page grows slow, and the file too large to send.
constexpr int64_t kMostSweeps = 20000;
// What a recording gets without --interval: each second of an hour, longer ones thinned out.
constexpr int64_t kUsualSweeps = 3600;
constexpr milliseconds kSecond{1000};

milliseconds checked_duration(const char* option, const std::string& text, milliseconds shortest) {
  const auto duration = parse_duration(text);
  if (!duration || *duration < shortest) {
    throw HostError(Fault::usage,
                    fmt::format("{}: '{}' is no time of {} ms or more, such as 2s, 10m or 1h30m",
                                option, text, shortest.count()));
  }
  return *duration;
}

milliseconds checked_interval(const ReportOptions& options, milliseconds length,
                              milliseconds usual) {
  const milliseconds interval =
      options.interval.empty() ? usual
                               : checked_duration("--interval", options.interval, milliseconds(50));
  if (length / interval > kMostSweeps) {
    throw HostError(Fault::usage, fmt::format("more than {} sweeps in {}; a longer --interval "
                                              "makes fewer",
                                              kMostSweeps, duration_text(length)));
  }
  return interval;
}

// Reads all items; nothing if a signal has come before the last of them.
std::optional<Readings> sweep(const Session& session, const std::vector<Item>& items,
                              Attendant& attendant) {
  return read_items(session, items, [&attendant](const Item&) { return !attendant.interrupted(); });
}

// Where a report's readings come from, and how they got into it.
struct Course {
  kova_exporter::Machine machine;
  std::string source;  // for people
  milliseconds length{0};
  milliseconds interval{kSecond};
};

// Sweeps until the time is over, or Ctrl-C, which leaves out the sweep that is running.
void watch(const Session& session, const std::vector<Item>& items, const Course& course,
           Attendant& attendant, ReportDocument& document) {
  Progress progress("sweep, Ctrl-C ends it",
                    static_cast<size_t>(course.length / course.interval + 1));
  auto next = steady_clock::now();
  const auto end = next + course.length;
  do {
    auto readings = sweep(session, items, attendant);
    if (!readings) {
      break;
    }
    document.add(unix_time(), std::move(*readings));
    progress.advance();
    // Sweeps keep to the clock; one that took longer than the interval delays the next.
    next = std::max(next + course.interval, steady_clock::now());
  } while (next <= end && !wait_until(attendant, next));
}

// The same through a recording, as fast as it can be read.
void walk(const Replay& replay, const Session& session, const std::vector<Item>& items,
          const Course& course, Attendant& attendant, ReportDocument& document) {
  Progress progress("sweep, Ctrl-C ends it",
                    static_cast<size_t>(course.length / course.interval + 1));
  for (milliseconds time{0}; time < course.length; time += course.interval) {
    replay.set_time(time);
    auto readings = sweep(session, items, attendant);
    if (!readings) {
      break;
    }
    document.add(replay.begin() + static_cast<double>(time.count()) / 1000, std::move(*readings));
    progress.advance();
  }
}

std::string host_name() {
  std::array<char, 256> name{};
  return gethostname(name.data(), name.size() - 1) == 0 ? name.data() : "localhost";
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
                      : checked_duration("--for", options.length, milliseconds(0));
  course.interval = checked_interval(options, course.length, kSecond);
  return course;
}

Course recorded_course(const ReportOptions& options, const Replay& replay) {
  Course course;
  course.machine = {stem(options.recording), ""};
  const std::string file = std::filesystem::path(options.recording).filename().string();
  course.source = fmt::format("the recording {} of {}{}{}", file, duration_text(replay.length()),
                              replay.note().empty() ? "" : ". ", replay.note());
  course.length = replay.length();
  const milliseconds usual = std::max(kSecond, course.length / kUsualSweeps / kSecond * kSecond);
  course.interval = checked_interval(options, course.length, usual);
  return course;
}

// Whatever fails in the end: not after minutes of reading.
void check_writable(const std::string& file) {
  const std::filesystem::path folder = std::filesystem::absolute(file).parent_path();
  if (access(folder.c_str(), W_OK) != 0) {
    throw HostError(Fault::usage, fmt::format("cannot write in the folder '{}'", folder.native()));
  }
}

ExitCode write_report(const ReportOptions& options, const Course& course,
                      const ReportDocument& document, size_t items) {
  if (document.sweeps() == 0) {
    report("stopped before the first sweep was whole; nothing is written");
    return ExitCode::item_failed;
  }
  const std::string sweeps =
      fmt::format("{} sweep{}", document.sweeps(), document.sweeps() == 1 ? "" : "s");
  const ReportDocument::Heading heading = {
      course.machine, course.source.empty() ? sweeps : sweeps + " from " + course.source,
      unix_time(), static_cast<double>(course.interval.count()) / 1000};
  replace_file(options.file, kova_page::single_file(document.json(heading)));
  if (document.failed_items() > 0) {
    report(fmt::format("{} of {} items failed in at least one sweep, as the report tells",
                       document.failed_items(), items));
    return ExitCode::item_failed;
  }
  return ExitCode::success;
}

ExitCode report_live(const GlobalOptions& globals, const ReportOptions& options) {
  const Course course = live_course(options, globals.host);
  const auto session = open_session(globals);
  const Inventory inventory = Inventory::of(*session);
  const std::vector<Item> items = distinct(inventory.items());
  ReportDocument document(inventory.items());
  globals.attendant->let_command_end();
  watch(*session, items, course, *globals.attendant, document);
  return write_report(options, course, document, items.size());
}

ExitCode report_recording(const GlobalOptions& globals, const ReportOptions& options) {
  HostOptions host = globals.host;
  host.simulate = true;
  host.machine = options.recording;
  const Module module(host);
  const Replay replay(host);
  const Course course = recorded_course(options, replay);
  const Session session(module, true);
  const Inventory inventory = Inventory::of(session);
  const std::vector<Item> items = distinct(inventory.items());
  ReportDocument document(inventory.items());
  globals.attendant->let_command_end();
  walk(replay, session, items, course, *globals.attendant, document);
  return write_report(options, course, document, items.size());
}

ExitCode run_report(const GlobalOptions& globals, const ReportOptions& options) {
  check_writable(options.file);
  if (options.recording.empty()) {
    return report_live(globals, options);
  }
  if (globals.host.simulate) {
    throw HostError(Fault::usage, "--from names the machine; --simulate names another one");
  }
  return report_recording(globals, options);
}

}  // namespace

void add_report(CommandLine& line) {
  auto options = std::make_shared<ReportOptions>();
  CLI::App& command =
      line.add({"report", "Write readings and charts into one HTML file",
                "kovactl report bus-042.html --for 5m"},
               [options](const GlobalOptions& globals) { return run_report(globals, *options); });
  command.add_option("FILE", options->file, "The file to write, as a whole or not at all")
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
                  "Time between sweeps (default 1s, more in a recording of hours)")
      ->type_name("TIME");
}

}  // namespace kovactl
