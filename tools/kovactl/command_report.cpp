// `kovactl report`: readings over a while, as a page in one file that opens anywhere.
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>

#include "tools/exporter/page/single_file.h"
#include "tools/host/atomic_file.h"
#include "tools/host/interrupts.h"
#include "tools/host/time_span.h"
#include "tools/host/unix_time.h"
#include "tools/kovactl/command_support.h"
#include "tools/kovactl/output.h"
#include "tools/kovactl/progress.h"
#include "tools/kovactl/report_document.h"

namespace kovactl {
namespace {

using std::chrono::steady_clock;

struct Options {
  std::string file;
  std::string duration = "1m";
  std::string interval = "1s";
};

// Above this the page grows slow, and the file too large to send.
constexpr double kMostSweeps = 20000;

double checked_time(const char* option, const std::string& text, double shortest, double longest) {
  const auto seconds = parse_time_span(text);
  if (!seconds || *seconds < shortest || *seconds > longest) {
    throw HostError(Fault::usage, fmt::format("{}: '{}' is no time of {} s to {} h, such as 90s",
                                              option, text, shortest, longest / 3600));
  }
  return *seconds;
}

steady_clock::duration ticks(double seconds) {
  return std::chrono::duration_cast<steady_clock::duration>(std::chrono::duration<double>(seconds));
}

// Sweeps until the time is over, or Ctrl-C, which leaves out the sweep that is running.
void watch(const Session& session, const std::vector<Item>& items, double duration, double interval,
           InterruptGuard& guard, ReportDocument& document) {
  const auto count = static_cast<size_t>(duration / interval) + 1;
  Progress progress("sweep", count);
  auto next = steady_clock::now();
  const auto end = next + ticks(duration);
  do {
    auto readings = read_items(session, items, [&](const Item&) { return !guard.interrupted(); });
    if (!readings) {
      break;
    }
    document.add(unix_time(), std::move(*readings));
    progress.advance();
    // Sweeps keep to the clock; one that took longer than the interval delays the next.
    next = std::max(next + ticks(interval), steady_clock::now());
  } while (next <= end && !guard.wait_until(next));
}

std::string host_name() {
  std::array<char, 256> name{};
  return gethostname(name.data(), name.size() - 1) == 0 ? name.data() : "localhost";
}

kova_exporter::Machine this_machine(const HostOptions& host) {
  if (!host.simulate) {
    return {host_name(), ""};
  }
  return {host_name(),
          host.machine ? std::filesystem::path(*host.machine).stem().string() : "built-in"};
}

// Whatever fails in the end: not after minutes of reading.
void check_writable(const std::string& file) {
  const std::filesystem::path folder = std::filesystem::absolute(file).parent_path();
  if (access(folder.c_str(), W_OK) != 0) {
    throw HostError(Fault::usage, fmt::format("cannot write in the folder '{}'", folder.native()));
  }
}

ExitCode run(const GlobalOptions& globals, const Options& options) {
  const double duration = checked_time("--for", options.duration, 0, 86400);
  const double interval = checked_time("--interval", options.interval, 0.05, 3600);
  if (duration / interval > kMostSweeps) {
    throw HostError(
        Fault::usage,
        fmt::format("more than {} sweeps; a longer --interval makes fewer", kMostSweeps));
  }
  check_writable(options.file);
  InterruptGuard guard;
  const auto session = open_session(globals);
  const Inventory inventory = Inventory::of(*session);
  ReportDocument document(inventory.items());
  const std::vector<Item> items = distinct(inventory.items());
  watch(*session, items, duration, interval, guard, document);
  if (document.sweeps() == 0) {
    report("stopped before the first sweep was whole; nothing is written");
    return ExitCode::item_failed;
  }
  const ReportDocument::Heading heading = {
      this_machine(globals.host), fmt::format("{} sweeps by kovactl report", document.sweeps()),
      unix_time(), interval};
  replace_file(options.file, kova_page::single_file(document.json(heading)));
  if (document.failed_items() > 0) {
    report(fmt::format("{} of {} items failed in at least one sweep", document.failed_items(),
                       items.size()));
    return ExitCode::item_failed;
  }
  return ExitCode::success;
}

}  // namespace

void add_report(CommandLine& line) {
  auto options = std::make_shared<Options>();
  CLI::App& command =
      line.add({"report", "Write readings and charts into one HTML file",
                "kovactl report bus-042.html --for 5m"},
               [options](const GlobalOptions& globals) { return run(globals, *options); });
  command.add_option("FILE", options->file, "The file to write, as a whole or not at all")
      ->required();
  command.add_option("--for", options->duration, "How long to read: 30s, 5m, 1h; 0 for once")
      ->type_name("TIME")
      ->capture_default_str();
  command.add_option("--interval", options->interval, "Time from one sweep to the next")
      ->type_name("TIME")
      ->capture_default_str();
}

}  // namespace kovactl
