// The thread beside the command's own. That one may be stuck in the device library, where nothing
// can reach it; this one shows progress, holds the device to its time, and takes Ctrl-C.
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "tools/host/system/errors.h"
#include "tools/host/system/interrupts.h"
#include "tools/kovactl/command_line.h"
#include "tools/kovactl/event_flag.h"

namespace kovactl {

class Attendant {
 public:
  using Tell = std::function<void(const kova_host::HostError&)>;

  // Takes SIGINT, SIGTERM and SIGHUP over; make it before any other thread. A call into the module
  // that lasts longer than the options' time limit ends the program, after `tell` was told what did
  // not answer.
  Attendant(const GlobalOptions& options, Tell tell);

  // For a command that is to end within so many seconds from its start, however fast each call
  // comes back; 0 for no limit.
  void limit_all(double seconds) { limit_of_all_seconds_ = seconds; }

  // For a command that a signal ends in order, with a status that tells of what it has done until
  // then: instead of the program's end, interruption() is raised, and end() follows. Another signal
  // ends the program nevertheless.
  void let_command_end() { command_can_end_ = true; }
  EventFlag& interruption() { return interruption_; }
  bool interrupted() const { return interrupted_; }

  // What the program ends with if the command cannot end it.
  void end_with(ExitCode code) { exit_code_ = code; }
  ExitCode exit_code() const { return exit_code_; }

  // The command is about to end. A call into the module that lasts longer than a second does not
  // keep the program from it: nobody waits for a device that hangs.
  void end() { ending_ = true; }

  // Called on the attendant's thread before it ends the program for a reason such as "interrupted":
  // to put the terminal in order, or to keep what has been done. Gives what to add to the message
  // about the end, "" for nothing.
  using BeforeExit = std::function<std::string(const std::string& reason)>;
  void before_exit(BeforeExit hook);

 private:
  void attend(const std::stop_token& stop);
  void check_signals();
  void die_of(int signal);
  void check_pending_call();
  void check_limit_of_all();
  void keep_up();
  [[noreturn]] void give_up(const kova_host::HostError& error);
  void check_end();
  void tell_of_end(const std::string& reason);
  std::string call_before_exit(const std::string& reason);

  using Clock = std::chrono::steady_clock;

  kova_host::InterruptGuard signals_;
  EventFlag interruption_;
  const double limit_seconds_;  // of a call; 0 for none
  std::atomic<double> limit_of_all_seconds_ = 0;
  const Clock::time_point start_ = Clock::now();
  kova_host::HostOptions host_options_;
  Tell tell_;
  std::mutex mutex_;
  BeforeExit before_exit_;  // under the mutex
  std::atomic<bool> command_can_end_ = false;
  std::atomic<bool> interrupted_ = false;
  std::atomic<bool> ending_ = false;
  std::atomic<ExitCode> exit_code_ = ExitCode::success;
  std::optional<Clock::time_point> end_began_;
  std::jthread thread_;  // the last member: it is stopped before the others go
};

}  // namespace kovactl
