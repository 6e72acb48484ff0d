// The thread beside the command's own: progress, the device's time limit, Ctrl-C.
#include "tools/kovactl/attendant.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <condition_variable>
#include <csignal>
#include <utility>

#include "tools/host/system/descriptor_output.h"
#include "tools/kovactl/output.h"
#include "tools/kovactl/progress.h"
#include "tools/kovactl/unanswered.h"

namespace kovactl {

using namespace kova_host;
namespace {

constexpr std::chrono::milliseconds kTick{50};
constexpr std::chrono::seconds kPatience{1};  // with a read that keeps the program from its end

double seconds_since(std::chrono::steady_clock::time_point time) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - time).count();
}

}  // namespace

Attendant::Attendant(const GlobalOptions& options, Tell tell)
    : limit_seconds_(options.timeout_seconds.value_or(0)),
      host_options_(options.host),
      tell_(std::move(tell)),
      thread_([this](const std::stop_token& stop) { attend(stop); }) {}

void Attendant::before_exit(BeforeExit hook) {
  const std::lock_guard lock(mutex_);
  before_exit_ = std::move(hook);
}

void Attendant::attend(const std::stop_token& stop) {
  block_all_signals();
  std::mutex mutex;
  std::unique_lock lock(mutex);
  std::condition_variable_any wake;
  while (!wake.wait_for(lock, stop, kTick, [&stop] { return stop.stop_requested(); })) {
    check_signals();
    check_end();
    if (limit_of_all_seconds_ > 0) {
      check_limit_of_all();
    } else {
      check_pending_call();
    }
    draw_progress();
  }
}

std::string Attendant::call_before_exit(const std::string& reason) {
  const std::lock_guard lock(mutex_);
  std::string text = before_exit_ ? before_exit_(reason) : "";
  end_progress();
  return text;
}

// Who has pressed Ctrl-C needs to be told only of what is kept.
void Attendant::tell_of_end(const std::string& reason) {
  const std::string more = call_before_exit(reason);
  if (!more.empty()) {
    report(reason + more);
  }
}

void Attendant::check_signals() {
  // What another guard protects comes first, such as a file that is being replaced.
  const int signal = InterruptGuard::others_live() ? 0 : signals_.take();
  if (signal == 0) {
    return;
  }
  if (!command_can_end_ || interrupted_.exchange(true)) {
    die_of(signal);
  }
  interruption_.raise();
  end();
}

void Attendant::die_of(int signal) {
  tell_of_end("interrupted");
  // As if the signal had never been held back, so that the caller sees what ended the program.
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, signal);
  (void)raise(signal);
  pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
}

void Attendant::check_end() {
  if (!ending_) {
    return;
  }
  const auto now = Clock::now();
  end_began_ = end_began_.value_or(now);
  const auto call = PendingCall::now();
  if (call && now - std::max(call->since, *end_began_) > kPatience) {
    tell_of_end(fmt::format("interrupted while {} did not answer", subject_of(*call)));
    _exit(static_cast<int>(exit_code_.load()));
  }
}

void Attendant::check_pending_call() {
  const auto call = PendingCall::now();
  if (limit_seconds_ <= 0 || !call || seconds_since(call->since) < limit_seconds_) {
    return;
  }
  give_up(unanswered(*call, limit_seconds_, host_options_, [this] {
    keep_up();
    return !interrupted_;
  }));
}

// A start of the module that has taken half of the time is looked into for the other half.
void Attendant::check_limit_of_all() {
  const double limit = limit_of_all_seconds_;
  const auto call = PendingCall::now();
  const bool starts = call && call->subject == PendingCall::Subject::module;
  if (!call || seconds_since(start_) < (starts ? limit / 2 : limit)) {
    return;
  }
  const auto is_pending = [&call] {
    const auto now = PendingCall::now();
    return now && now->since == call->since;
  };
  const HostError error = unfinished(*call, limit, host_options_, [&] {
    keep_up();
    return !interrupted_ && is_pending() && seconds_since(start_) < limit;
  });
  if (seconds_since(start_) >= limit && is_pending()) {
    give_up(error);
  }
}

// What goes on while a second process is asked.
void Attendant::keep_up() {
  check_signals();
  draw_progress();
  check_end();
}

void Attendant::give_up(const HostError& error) {
  const std::string more = call_before_exit(error.what());
  try {
    tell_({error.fault(), error.what() + more, error.status()});
  } catch (const OutputError&) {
    // The exit code says it.
  }
  _exit(static_cast<int>(exit_code_of(error)));
}

}  // namespace kovactl
