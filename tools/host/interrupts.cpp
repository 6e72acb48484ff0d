// Waiting that Ctrl-C ends in order. The signals stay blocked and are fetched, so that none falls
// between a check and the wait after it.
#include "tools/host/interrupts.h"

#include <algorithm>
#include <cerrno>
#include <initializer_list>

namespace kova_host {

InterruptGuard::InterruptGuard() {
  sigemptyset(&signals_);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    sigaddset(&signals_, signal);
  }
  pthread_sigmask(SIG_BLOCK, &signals_, &previous_);
}

InterruptGuard::~InterruptGuard() {
  pthread_sigmask(SIG_SETMASK, &previous_, nullptr);
}

bool InterruptGuard::wait_until(std::chrono::steady_clock::time_point time) {
  using std::chrono::nanoseconds;
  while (!interrupted_) {
    const auto left =
        std::max(nanoseconds(0),
                 std::chrono::duration_cast<nanoseconds>(time - std::chrono::steady_clock::now()));
    const timespec timeout = {.tv_sec = static_cast<time_t>(left.count() / 1'000'000'000),
                              .tv_nsec = static_cast<long>(left.count() % 1'000'000'000)};
    if (sigtimedwait(&signals_, nullptr, &timeout) > 0) {
      interrupted_ = true;
    } else if (errno == EAGAIN) {
      break;
    }
  }
  return interrupted_;
}

}  // namespace kova_host
