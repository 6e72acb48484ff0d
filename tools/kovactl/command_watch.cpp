// `kovactl watch`: samples at a fixed interval until a number of them or Ctrl-C.
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <memory>

#include "tools/host/interrupts.h"
#include "tools/kovactl/command_support.h"
#include "tools/kovactl/output.h"
#include "tools/kovactl/progress.h"
#include "tools/kovactl/terminal.h"
#include "tools/kovactl/watch_view.h"

namespace kovactl {
namespace {

using std::chrono::steady_clock;

struct Options {
  Selection selection;
  std::string interval;
  std::string count;
  bool json = false;
};

double checked_interval(const std::string& text) {
  const auto number = parse_number(text);
  const double seconds =
      !number ? 0 : std::visit([](auto v) { return static_cast<double>(v); }, *number);
  if (seconds < 0.05 || seconds > 86400) {
    throw HostError(Fault::usage,
                    fmt::format("'{}' is no interval of 0.05 to 86400 seconds", text));
  }
  return seconds;
}

uint32_t checked_count(const std::string& text) {
  const auto count = parse_item_id(text);
  if (!count || *count == 0) {
    throw HostError(Fault::usage, fmt::format("'{}' is no number of samples", text));
  }
  return *count;
}

// Prints one sample in the form that was asked for or that suits stdout.
class SamplePrinter {
 public:
  SamplePrinter(const std::vector<Item>& items, bool json) : items_(items), json_(json) {
    if (!json && is_terminal(STDOUT_FILENO)) {
      view_ = std::make_unique<WatchView>(items, Painter::for_stdout(), prefers_utf8());
    }
  }

  void operator()(const Readings& readings) {
    if (view_ != nullptr) {
      view_->show(readings, terminal_rows());
    } else {
      print(json_ ? sample_json(items_, readings) : sample_line(items_, readings));
    }
  }

 private:
  const std::vector<Item>& items_;
  bool json_;
  std::unique_ptr<WatchView> view_;
};

// Nothing if a signal has come before the last read.
std::optional<Readings> read_until(InterruptGuard& guard, const Session& session,
                                   const std::vector<Item>& items) {
  Progress progress("reading", items.size());
  return read_items(session, items, [&guard, &progress](const Item&) {
    progress.advance();
    return !guard.interrupted();
  });
}

ExitCode run(const GlobalOptions& globals, const Options& options) {
  const double interval_seconds = options.interval.empty() ? 2 : checked_interval(options.interval);
  const uint32_t count = options.count.empty() ? 0 : checked_count(options.count);  // 0: no end
  InterruptGuard guard;
  const auto session = open_session(globals);
  const Inventory inventory = Inventory::of(*session);
  const std::vector<Item> items = select_distinct(inventory.items(), options.selection);
  SamplePrinter print_sample(items, options.json);
  const auto interval = std::chrono::duration_cast<steady_clock::duration>(
      std::chrono::duration<double>(interval_seconds));

  bool failed = false;
  auto next = steady_clock::now();
  for (uint32_t sample = 1;; ++sample) {
    // Ctrl-C between two reads ends the sample unfinished; what is printed is always whole.
    const auto readings = read_until(guard, *session, items);
    if (!readings) {
      break;
    }
    print_sample(*readings);
    failed = failed || any_failed(*readings);
    if (sample == count) {
      break;
    }
    // Samples keep to the clock; one that took longer than the interval delays the next.
    next = std::max(next + interval, steady_clock::now());
    if (guard.wait_until(next)) {
      break;
    }
  }
  return failed ? ExitCode::item_failed : ExitCode::success;
}

}  // namespace

void add_watch(CommandLine& line) {
  auto options = std::make_shared<Options>();
  CLI::App& command =
      line.add({"watch", "Show values as they change",
                "kovactl --simulate watch 0x14170111 --interval 0.5 --count 20"},
               [options](const GlobalOptions& globals) { return run(globals, *options); });
  add_selection(command, options->selection);
  command.add_option("--interval", options->interval, "Seconds between samples (default 2)")
      ->type_name("S");
  command.add_option("--count", options->count, "End after so many samples")->type_name("N");
  command.add_flag("--json", options->json, "Print one line of JSON a sample");
}

}  // namespace kovactl
