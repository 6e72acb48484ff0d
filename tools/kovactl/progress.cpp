// Signs of life on stderr while something slow runs.
#include "tools/kovactl/progress.h"

#include <fmt/format.h>
#include <unistd.h>

#include <chrono>
#include <mutex>
#include <utility>

#include "tools/host/system/plain_text.h"
#include "tools/kovactl/output.h"
#include "tools/kovactl/terminal.h"

namespace kovactl {

using namespace kova_host;
namespace {

using std::chrono::steady_clock;

struct State {
  std::mutex mutex;
  bool ended = false;
  std::string label;  // "" if there is nothing to show
  std::string item;
  size_t done = 0;
  size_t total = 0;
  steady_clock::time_point start;
  bool drawn = false;
};

State& state() {
  static State instance;
  return instance;
}

std::string line_of(const State& now, steady_clock::duration elapsed) {
  using std::chrono::duration_cast, std::chrono::seconds;
  if (now.total == 0) {
    return fmt::format("{}, {} s", now.label, duration_cast<seconds>(elapsed).count());
  }
  return fmt::format("{} {}/{}{}{}", now.label, now.done, now.total, now.item.empty() ? "" : ", ",
                     now.item);
}

void erase(State& now) {
  if (std::exchange(now.drawn, false)) {
    write_if_possible(STDERR_FILENO, fmt::format("\r{}", kEraseToEndOfLine));
  }
}

}  // namespace

Progress::Progress(std::string label, size_t total) {
  State& now = state();
  const std::lock_guard lock(now.mutex);
  now.label = std::move(label);
  now.item.clear();
  now.done = 0;
  now.total = total;
  now.start = steady_clock::now();
}

Progress::~Progress() {
  State& now = state();
  const std::lock_guard lock(now.mutex);
  now.label.clear();
  erase(now);
}

void Progress::advance(const kova_host::Item& item) {
  State& now = state();
  const std::lock_guard lock(now.mutex);
  ++now.done;
  now.item = label_of(item);
}

void Progress::advance() {
  State& now = state();
  const std::lock_guard lock(now.mutex);
  ++now.done;
}

void draw_progress() {
  State& now = state();
  const std::lock_guard lock(now.mutex);
  const auto elapsed = steady_clock::now() - now.start;
  if (now.ended || now.label.empty() || elapsed < std::chrono::milliseconds(500) ||
      !can_draw_on(STDERR_FILENO)) {
    return;
  }
  // A line that wrapped could not be drawn over.
  const std::string line = kova_host::shortened(kova_host::printable(line_of(now, elapsed)),
                                                terminal_columns(STDERR_FILENO).value_or(80) - 1);
  write_if_possible(STDERR_FILENO, fmt::format("\r{}{}", line, kEraseToEndOfLine));
  now.drawn = true;
}

void end_progress() {
  State& now = state();
  const std::lock_guard lock(now.mutex);
  erase(now);
  now.ended = true;
}

}  // namespace kovactl
