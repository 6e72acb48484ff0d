// `kovactl watch`: samples at a fixed interval until a number of them or Ctrl-C.
#include <fmt/format.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <memory>

#include "tools/host/system/duration.h"
#include "tools/host/system/typed_number.h"
#include "tools/kovactl/attendant.h"
#include "tools/kovactl/command_support.h"
#include "tools/kovactl/output.h"
#include "tools/kovactl/sample_text.h"
#include "tools/kovactl/terminal.h"
#include "tools/kovactl/watch_sampler.h"
#include "tools/kovactl/watch_screen.h"

namespace kovactl {

using namespace kova_host;
namespace {

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

// Waits for one of the descriptors, or so many milliseconds; -1 for no end. False once nobody sees
// the output any more: the terminal is gone, or the reader of a pipe.
bool wait_for(std::initializer_list<int> descriptors, int milliseconds) {
  std::vector<pollfd> events = {{.fd = STDOUT_FILENO, .events = 0, .revents = 0}};
  for (const int descriptor : descriptors) {
    events.push_back({.fd = descriptor, .events = POLLIN, .revents = 0});
  }
  poll(events.data(), events.size(), milliseconds);
  return std::none_of(events.begin(), events.end(), [](const pollfd& event) {
    return (event.revents & (POLLHUP | POLLERR)) != 0;
  });
}

// The work of one `watch`, in the form that was asked for or that suits stdout.
class Watch {
 public:
  Watch(Attendant& attendant, const WatchOptions& options, const Session& session,
        const WatchSampler::Plan& plan)
      : attendant_(attendant), options_(options), items_(plan.items), sampler_(session, plan) {}
  // The sampler's last read may never come back.
  ~Watch() { attendant_.end(); }
  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;

  // Until the last sample, a signal or the user's wish.
  void as_lines();
  // False if the terminal cannot show it.
  bool on_screen();

 private:
  void note_failures(const Sample& sample);
  void print_lines(const Sample& sample);

  Attendant& attendant_;
  const WatchOptions& options_;
  std::vector<Item> items_;
  WatchHistory history_;
  WatchSampler sampler_;
};

void Watch::note_failures(const Sample& sample) {
  if (any_failed(sample.readings)) {
    attendant_.end_with(ExitCode::item_failed);
  }
}

void Watch::print_lines(const Sample& sample) {
  history_.follow(items_, sample.readings);
  std::vector<Item> items;
  std::copy_if(items_.begin(), items_.end(), std::back_inserter(items), [this](const Item& item) {
    return !options_.changed || history_.samples() == 1 || history_.track(item).changed;
  });
  if (!items.empty()) {
    print(options_.json ? sample_json(items, sample) : sample_line(items, sample));
  }
}

void Watch::as_lines() {
  while (!sampler_.finished() && !attendant_.interrupted() &&
         wait_for({sampler_.news().descriptor(), attendant_.interruption().descriptor()}, -1)) {
    if (const auto sample = sampler_.take()) {
      note_failures(*sample);
      print_lines(*sample);
    }
  }
}

bool Watch::on_screen() {
  auto screen = WatchScreen::open(items_, options_.changed);
  if (screen == nullptr) {
    return false;
  }
  attendant_.before_exit([&screen](const std::string&) {
    screen->abandon();
    return std::string();
  });
  const int keys = is_terminal(STDIN_FILENO) ? STDIN_FILENO : -1;
  bool is_seen = true;
  while (is_seen && !sampler_.finished() && !attendant_.interrupted() && !screen->wants_to_quit()) {
    // Once a second too, to show that the device is waited for.
    is_seen = wait_for({sampler_.news().descriptor(), attendant_.interruption().descriptor(), keys},
                       1000);
    if (const auto sample = sampler_.take()) {
      note_failures(*sample);
      screen->show(*sample);
    }
    screen->answer();
    sampler_.pause(screen->paused());
  }
  attendant_.before_exit(nullptr);
  const std::string rows = screen->rows_as_text();
  screen.reset();
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
  Attendant& attendant = *globals.attendant;
  attendant.let_command_end();
  const auto session = open_session(globals);
  const Inventory inventory = Inventory::of(*session);
  const std::vector<Item> items = select_distinct(inventory.items(), options.selection);
  Watch watch(attendant, options, *session, {items, interval, count});
  if (options.json || !can_draw_on(STDOUT_FILENO) || !watch.on_screen()) {
    watch.as_lines();
  }
  return attendant.exit_code();
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
