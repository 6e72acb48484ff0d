// Signs of life on stderr while something slow runs.
#include "tools/kovactl/progress.h"

#include <fmt/format.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <utility>

#include "tools/kovactl/output.h"
#include "tools/kovactl/terminal.h"

namespace kovactl {

Progress::Progress(std::string label, size_t total) : label_(std::move(label)), total_(total) {
  if (is_terminal(STDERR_FILENO)) {
    thread_ = std::jthread([this](const std::stop_token& stop) { draw(stop); });
  }
}

std::string Progress::line(int seconds) const {
  if (total_ == 0) {
    return fmt::format("\r{}, {} s{}", label_, seconds, kEraseToEndOfLine);
  }
  return fmt::format("\r{} {}/{}{}", label_, done_.load(), total_, kEraseToEndOfLine);
}

void Progress::draw(const std::stop_token& stop) const {
  using std::chrono::steady_clock;
  const auto start = steady_clock::now();
  auto next = start + std::chrono::milliseconds(500);
  std::mutex mutex;
  std::unique_lock lock(mutex);
  std::condition_variable_any wake;
  bool drawn = false;
  while (!wake.wait_until(lock, stop, next, [&stop] { return stop.stop_requested(); })) {
    const auto elapsed = steady_clock::now() - start;
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(elapsed).count();
    write_if_possible(STDERR_FILENO, line(static_cast<int>(seconds)));
    drawn = true;
    next = steady_clock::now() + std::chrono::milliseconds(200);
  }
  if (drawn) {
    write_if_possible(STDERR_FILENO, fmt::format("\r{}", kEraseToEndOfLine));
  }
}

}  // namespace kovactl
