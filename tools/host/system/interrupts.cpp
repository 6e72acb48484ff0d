// Waiting that Ctrl-C ends in order. The signals stay blocked and are fetched, so that none falls
// between a check and the wait after it.
#include "tools/host/system/interrupts.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <initializer_list>
#include <utility>

namespace kova_host {
namespace {

std::atomic<int> living_guards = 0;

}  // namespace

InterruptGuard::InterruptGuard() {
  ++living_guards;
  sigemptyset(&signals_);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    // A blocked signal comes even if it is ignored, as nohup wants it.
    struct sigaction action {};
    if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler != SIG_IGN) {
      sigaddset(&signals_, signal);
    }
  }
  pthread_sigmask(SIG_BLOCK, &signals_, &previous_);
}

InterruptGuard::~InterruptGuard() {
  --living_guards;
  pthread_sigmask(SIG_SETMASK, &previous_, nullptr);
}

int InterruptGuard::take() {
  return interrupted() ? std::exchange(signal_, 0) : 0;
}

bool InterruptGuard::others_live() {
  return living_guards > 1;
}

bool InterruptGuard::wait_until(std::chrono::steady_clock::time_point time) {
  using std::chrono::nanoseconds;
  while (signal_ == 0) {
    const auto left =
        std::max(nanoseconds(0),
                 std::chrono::duration_cast<nanoseconds>(time - std::chrono::steady_clock::now()));
    const timespec timeout = {.tv_sec = static_cast<time_t>(left.count() / 1'000'000'000),
                              .tv_nsec = static_cast<long>(left.count() % 1'000'000'000)};
    const int signal = sigtimedwait(&signals_, nullptr, &timeout);
    if (signal > 0) {
      signal_ = signal;
    } else if (errno == EAGAIN) {
      break;
    }
  }
  return signal_ != 0;
}

void block_all_signals() {
  sigset_t all;
  sigfillset(&all);
  pthread_sigmask(SIG_BLOCK, &all, nullptr);
}

}  // namespace kova_host
