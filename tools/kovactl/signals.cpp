// Ctrl-C and its kin: kept in a flag, and in a descriptor that wakes whoever waits.
#include "tools/kovactl/signals.h"

#include <sys/eventfd.h>
#include <sys/time.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <system_error>

namespace kovactl {
namespace {

std::atomic<int> came = 0;
std::atomic<bool> promised = false;
std::atomic<int> descriptor = -1;
static_assert(std::atomic<int>::is_always_lock_free && std::atomic<bool>::is_always_lock_free);

// What follows may be called by a signal handler.

void on_signal(int signal) {
  const int error = errno;
  if (came.exchange(signal) != 0) {
    die_of(signal);
  }
  const uint64_t one = 1;
  (void)!write(descriptor, &one, sizeof one);
  if (!promised) {
    constexpr itimerval kMoment = {.it_interval = {}, .it_value = {.tv_sec = 0, .tv_usec = 300000}};
    setitimer(ITIMER_REAL, &kMoment, nullptr);
  }
  errno = error;
}

void on_alarm(int /*signal*/) {
  die_of(came);
}

void handle(int signal, void (*handler)(int)) {
  struct sigaction action {};
  if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler != SIG_IGN) {
    action = {};
    action.sa_handler = handler;
    sigaction(signal, &action, nullptr);
  }
}

}  // namespace

void watch_signals() {
  descriptor = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (descriptor < 0) {
    throw std::system_error(errno, std::generic_category(), "cannot wait for signals");
  }
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    handle(signal, on_signal);
  }
  handle(SIGALRM, on_alarm);
}

void promise_to_end() {
  promised = true;
}

int signal_that_came() {
  return came;
}

int signal_descriptor() {
  return descriptor;
}

void die_of(int signal) {
  (void)std::signal(signal, SIG_DFL);
  (void)raise(signal);
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, signal);
  sigprocmask(SIG_UNBLOCK, &signals, nullptr);
  _exit(128 + signal);
}

}  // namespace kovactl
