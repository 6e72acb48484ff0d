// Signs of life on stderr while something slow runs.
#pragma once

#include <atomic>
#include <cstddef>
#include <string>
#include <thread>

namespace kovactl {

// Shows "reading 37/412", or "starting the module, 3 s" without a total, once the work has taken
// half a second; takes the line away again when it is destroyed. Silent unless stderr is a
// terminal. The drawing has a thread of its own, since one device call may last for seconds.
class Progress {
 public:
  explicit Progress(std::string label, size_t total = 0);

  void advance() { ++done_; }

 private:
  void draw(const std::stop_token& stop) const;
  std::string line(int seconds) const;

  std::string label_;
  size_t total_;
  std::atomic<size_t> done_ = 0;
  std::jthread thread_;  // the last member: it is stopped before the others go
};

}  // namespace kovactl
