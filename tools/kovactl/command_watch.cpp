// `kovactl watch`: samples at a fixed interval until a number of them or Ctrl-C.
#include <fmt/format.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <memory>

#include "tools/host/system/duration.h"
#include "tools/host/system/typed_number.h"
#include "tools/kovactl/command_support.h"
#include "tools/kovactl/output.h"
#include "tools/kovactl/sample_text.h"
#include "tools/kovactl/signals.h"
#include "tools/kovactl/terminal.h"
#include "tools/kovactl/watch_screen.h"

namespace kovactl {

using namespace kova_host;
namespace {

using std::chrono::steady_clock;

struct WatchOptions {
  Selection selection;
  std::string interval;
  std::string count;
  bool changed = false;
  bool json = false;
};

uint32_t checked_count(const std::string& text) {
  const auto count = parse_item_id(text);
  if (!count || *count == 0) {
    throw HostError(Fault::usage, fmt::format("'{}' is no number of samples", text));
  }
  return *count;
}

struct WatchPlan {
  std::vector<Item> items;
  steady_clock::duration interval;
  uint32_t count;  // samples; 0 for no end
};

// True once nobody sees the output any more: the terminal is gone, or the reader of a pipe.
bool is_unseen(const pollfd& output) {
  return (output.revents & (POLLHUP | POLLERR)) != 0;
}

// The work of one `watch`, in the form that was asked for or that suits stdout.
class Watch {
 public:
  Watch(DeviceUse& device, const WatchOptions& options, const Session& session, WatchPlan plan)
      : device_(device), options_(options), session_(session), plan_(std::move(plan)) {}

  // Until the last sample, a signal or the user's wish.
  void run() {
    if (options_.json || !can_draw_on(STDOUT_FILENO) || !on_screen()) {
      work();
    }
  }

  ExitCode exit_code() const { return failed_ ? ExitCode::item_failed : ExitCode::success; }

 private:
  bool on_screen();
  void work();
  bool wait_for(steady_clock::time_point time);
  bool go_on(const CallUnderWay* call);
  void show(const Sample& sample);
  void print_lines(const Sample& sample);

  DeviceUse& device_;
  const WatchOptions& options_;
  const Session& session_;
  const WatchPlan plan_;
  WatchHistory history_;
  std::unique_ptr<WatchScreen> screen_;
  int keys_ = -1;
  bool failed_ = false;
};

void Watch::print_lines(const Sample& sample) {
  history_.follow(plan_.items, sample.readings);
  std::vector<Item> items;
  std::copy_if(
      plan_.items.begin(), plan_.items.end(), std::back_inserter(items), [this](const Item& item) {
        return !options_.changed || history_.samples() == 1 || history_.track(item).changed;
      });
  if (!items.empty()) {
    print(options_.json ? sample_json(items, sample) : sample_line(items, sample));
  }
}

void Watch::show(const Sample& sample) {
  failed_ = failed_ || any_failed(sample.readings);
  if (screen_ != nullptr) {
    screen_->show(sample);
  } else {
    print_lines(sample);
  }
}

// What goes on beside the samples, while the device is waited for and in between: the keys, and a
// look whether anybody is there.
bool Watch::go_on(const CallUnderWay* call) {
  pollfd output = {STDOUT_FILENO, 0, 0};
  poll(&output, 1, 0);
  if (screen_ != nullptr) {
    screen_->answer(call == nullptr ? std::nullopt : std::optional(*call));
  }
  return !is_unseen(output) && (screen_ == nullptr || !screen_->wants_to_quit());
}

// False if the watching ends before that time.
bool Watch::wait_for(steady_clock::time_point time) {
  while (!device_.interrupted() && go_on(nullptr)) {
    const bool paused = screen_ != nullptr && screen_->paused();
    const auto rest =
        std::chrono::ceil<std::chrono::milliseconds>(time - steady_clock::now()).count();
    if (rest <= 0 && !paused) {
      return true;
    }
    pollfd descriptors[] = {
        {STDOUT_FILENO, 0, 0}, {signal_descriptor(), POLLIN, 0}, {keys_, POLLIN, 0}};
    poll(descriptors, std::size(descriptors),
         static_cast<int>(paused ? 1000 : std::min<int64_t>(rest, 60'000)));
  }
  return false;
}

void Watch::work() {
  device_.while_waiting([this](const CallUnderWay& call) { return go_on(&call); }, keys_);
  SweepPlan sweeps(plan_.items);
  auto next = steady_clock::now();
  for (uint32_t number = 1; wait_for(next); ++number) {
    const auto began = steady_clock::now();
    Readings readings = sweep_items(session_, sweeps, began.time_since_epoch());
    next = next_sweep(next, plan_.interval, began, steady_clock::now());
    show({std::move(readings), std::chrono::system_clock::now()});
    if (number == plan_.count) {
      break;
    }
  }
}

// False if the terminal cannot show it.
bool Watch::on_screen() {
  screen_ = WatchScreen::open(plan_.items, options_.changed);
  if (screen_ == nullptr) {
    return false;
  }
  keys_ = is_terminal(STDIN_FILENO) ? STDIN_FILENO : -1;
  try {
    work();
    (void)go_on(nullptr);
  } catch (const CallGivenUp&) {
    // The end that the user wants.
  }
  device_.while_waiting({}, -1);
  const std::string rows = screen_->rows_as_text();
  screen_.reset();
  print(rows);
  return true;
}

ExitCode run_watch(const GlobalOptions& globals, const WatchOptions& options) {
  const std::chrono::milliseconds interval =
      options.interval.empty()
          ? std::chrono::seconds(2)
          : checked_duration(options.interval, "interval", std::chrono::milliseconds(50),
                             std::chrono::hours(24));
  const uint32_t count = options.count.empty() ? 0 : checked_count(options.count);  // 0: no end
  globals.device->let_command_end();
  const auto session = open_session(globals);
  const Inventory inventory = Inventory::of(*session);
  Watch watch(*globals.device, options, *session,
              {select_distinct(inventory.items(), options.selection), interval, count});
  try {
    watch.run();
  } catch (const CallGivenUp&) {
    // The end that the user wants.
  }
  return watch.exit_code();
}

}  // namespace

void add_watch(CommandLine& line) {
  auto options = std::make_shared<WatchOptions>();
  CLI::App& command =
      line.add({"watch", "Show values as they change",
                "kovactl --simulate watch 0x14170111 --interval 0.5 --count 20"},
               [options](const GlobalOptions& globals) { return run_watch(globals, *options); });
  add_selection(command, options->selection);
  command.add_option("--interval", options->interval, "Time between samples (default 2s)")
      ->type_name("TIME");
  command.add_option("--count", options->count, "End after so many samples")->type_name("N");
  command.add_flag("--changed", options->changed, "Show only what has changed lately");
  command.add_flag("--json", options->json, "Print one line of JSON a sample");
}

}  // namespace kovactl
