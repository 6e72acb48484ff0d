// Waiting that Ctrl-C ends in order.
#pragma once

#include <signal.h>

#include <chrono>

namespace kova_host {

// While it lives, SIGINT, SIGTERM and SIGHUP do not kill the program: they are kept until asked
// for, except those that the program was started to ignore. Make it before any other thread, which
// inherits it.
class InterruptGuard {
 public:
  InterruptGuard();
  ~InterruptGuard();
  InterruptGuard(const InterruptGuard&) = delete;
  InterruptGuard& operator=(const InterruptGuard&) = delete;

  // True once one of the signals has come.
  bool interrupted() { return wait_until(std::chrono::steady_clock::time_point()); }

  // The signal that has come, 0 without one; from then on another one can come.
  int take();

  // True while another guard lives: its owner must not be ended now.
  static bool others_live();

  // Waits for that time, or for a signal; true if one has come.
  bool wait_until(std::chrono::steady_clock::time_point time);

 private:
  sigset_t signals_{};
  sigset_t previous_{};
  int signal_ = 0;
};

// For a thread that is to receive no signal: those of the terminal belong to the main one.
void block_all_signals();

}  // namespace kova_host
