// `kovactl watch`: samples at a fixed interval until a number of them or Ctrl-C.
#include <unistd.h>

#include <algorithm>
#include <memory>

#include "commands.h"
#include "output.h"
#include "terminal.h"
#include "wait.h"
#include "watch_view.h"

namespace kovactl {
namespace {

using std::chrono::steady_clock;

std::vector<Item> watched_items(const Catalogue& catalogue, const std::vector<uint32_t>& ids) {
  if (ids.empty()) {
    return catalogue.distinct_items();
  }
  return catalogue.describe(ids);
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

}  // namespace

ExitCode run_watch(const Request& request) {
  InterruptGuard guard;
  const HostSession session(request.host);
  const Catalogue catalogue = Catalogue::from_document(session.capability().get());
  const std::vector<Item> items = watched_items(catalogue, request.ids);
  SamplePrinter print_sample(items, request.json);
  const auto interval = std::chrono::duration_cast<steady_clock::duration>(
      std::chrono::duration<double>(request.interval_seconds));

  bool failed = false;
  auto next = steady_clock::now();
  for (uint32_t sample = 1;; ++sample) {
    // Ctrl-C between two reads ends the sample unfinished; what is printed is always whole.
    const auto readings = read_items(session, items, [&guard] { return guard.interrupted(); });
    if (!readings) {
      break;
    }
    print_sample(*readings);
    failed = failed || any_failed(*readings);
    if (sample == request.count) {
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

}  // namespace kovactl
