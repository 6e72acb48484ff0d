// Signs of life on stderr while something slow runs.
#include "tools/kovactl/progress.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <utility>

#include "tools/host/system/plain_text.h"
#include "tools/kovactl/output.h"
#include "tools/kovactl/terminal.h"

namespace kovactl {

using namespace kova_host;
namespace {

using std::chrono::steady_clock;

struct State {
  std::string label;  // "" if there is nothing to show
  std::vector<Item> items;
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

void draw(State& now) {
  const auto elapsed = steady_clock::now() - now.start;
  if (now.label.empty() || elapsed < std::chrono::milliseconds(500) ||
      !can_draw_on(STDERR_FILENO)) {
    return;
  }
  // A line that wrapped could not be drawn over.
  const std::string line = kova_host::shortened(kova_host::printable(line_of(now, elapsed)),
                                                terminal_columns(STDERR_FILENO).value_or(80) - 1);
  write_if_possible(STDERR_FILENO, fmt::format("\r{}{}", line, kEraseToEndOfLine));
  now.drawn = true;
}

}  // namespace

Progress::Progress(std::string label, size_t total) {
  state() = {};
  state().label = std::move(label);
  state().total = total;
  state().start = steady_clock::now();
}

Progress::Progress(std::string label, std::vector<kova_host::Item> items)
    : Progress(std::move(label), items.size()) {
  state().items = std::move(items);
}

Progress::~Progress() {
  state().label.clear();
  if (state().drawn) {
    write_if_possible(STDERR_FILENO, fmt::format("\r{}", kEraseToEndOfLine));
  }
}

void Progress::advance() {
  ++state().done;
}

void draw_progress(const CallSubject& subject) {
  State& now = state();
  const auto item = std::find_if(now.items.begin(), now.items.end(), [&](const Item& candidate) {
    return subject == CallSubject{CallSubject::Kind::item, candidate.id};
  });
  if (item != now.items.end()) {
    now.done = static_cast<size_t>(item - now.items.begin()) + 1;
    now.item = label_of(*item);
  }
  draw(now);
}

}  // namespace kovactl
