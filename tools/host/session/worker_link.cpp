// Talks with a worker.
#include "tools/host/session/worker_link.h"

#include <fmt/format.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "tools/host/session/worker.h"

namespace kova_host {
namespace {

using Cause = WorkerDeath::Cause;
using std::chrono::duration;

constexpr std::chrono::milliseconds kTick{50};
// However much goes on in it: a message that takes so many times the limit of a call never comes.
constexpr int kMostCallsOfAMessage = 60;
constexpr double kLongestMessageSeconds = 600;

double seconds_since(std::chrono::steady_clock::time_point time) {
  return duration<double>(std::chrono::steady_clock::now() - time).count();
}

// What has happened, without the item.
std::string what_happened(Cause cause, int number) {
  switch (cause) {
    case Cause::crashed:
      return fmt::format("the device library crashed (signal {})", number);
    case Cause::ended:
      return fmt::format("the device library ended the process (exit code {})", number);
    case Cause::deaf:
      return "the device library closed the connection";
    case Cause::talked_nonsense:
      return "the device's process sent what is no answer";
    default:
      return "the device's process cannot be started";
  }
}

WorkerProcess started(const std::string& program) {
  try {
    return WorkerProcess(program);
  } catch (const std::exception& error) {
    throw WorkerDeath(Cause::not_started, 0, {}, error.what());
  }
}

}  // namespace

std::string WorkerDeath::reason(double limit_seconds) const {
  return cause_ == Cause::hung ? fmt::format("has not answered for {} s", limit_seconds)
                               : what_happened(cause_, number_);
}

WorkerLink::WorkerLink(const WorkerSettings& settings)
    : settings_(settings), process_(started(settings.program)) {}

std::optional<uint32_t> WorkerLink::code() const {
  const Whereabouts& page = process_.page();
  return page.inside.load(std::memory_order_acquire) == 1
             ? std::optional(page.code.load(std::memory_order_relaxed))
             : std::nullopt;
}

std::optional<size_t> WorkerLink::place(size_t count) const {
  const uint32_t place = process_.page().place.load(std::memory_order_acquire);
  return place < count ? std::optional<size_t>(place) : std::nullopt;
}

// The item that was asked for; or else the code that the module, or we, have come to.
CallSubject WorkerLink::subject() const {
  if (const auto at = place(questions_.size())) {
    return {CallSubject::Kind::item, questions_[*at].id};
  }
  if (asked_.kind != CallSubject::Kind::item) {
    if (const auto at = code()) {
      return {CallSubject::Kind::device_code, *at};
    }
  }
  return asked_;
}

void WorkerLink::send(const std::string& text, const CallSubject& subject) {
  asked_ = subject;
  questions_ = {};
  call_began_ = step_began_ = Clock::now();
  size_t done = 0;
  while (done < text.size()) {
    const ssize_t size = ::send(process_.socket(), text.data() + done, text.size() - done,
                                MSG_NOSIGNAL | MSG_DONTWAIT);
    if (size > 0) {
      done += static_cast<size_t>(size);
    } else if (errno == EAGAIN) {
      wait_for(POLLOUT);
    } else if (errno != EINTR) {
      die_of_its_end();
    }
  }
}

Frame WorkerLink::next_frame(const CallSubject& subject, std::span<const ItemQuestion> questions) {
  asked_ = subject;
  questions_ = questions;
  call_began_ = step_began_ = Clock::now();
  for (;;) {
    try {
      if (auto frame = reader_.next()) {
        return std::move(*frame);
      }
    } catch (const BadMessage&) {
      die(Cause::talked_nonsense, 0);
    }
    std::array<char, 16384> bytes;  // NOLINT: filled below
    const ssize_t size = recv(process_.socket(), bytes.data(), bytes.size(), MSG_DONTWAIT);
    if (size > 0) {
      reader_.add({bytes.data(), static_cast<size_t>(size)});
    } else if (size < 0 && errno == EAGAIN) {
      wait_for(POLLIN);
    } else if (size == 0 || errno != EINTR) {
      die_of_its_end();
    }
  }
}

void WorkerLink::wait_for(short events) {
  std::vector<pollfd> descriptors = {{process_.socket(), events, 0},
                                     {process_.end_descriptor(), POLLIN, 0}};
  if (settings_.waiting != nullptr) {
    for (const int descriptor : settings_.waiting->descriptors()) {
      descriptors.push_back({descriptor, POLLIN, 0});
    }
  }
  const int ready = poll(descriptors.data(), descriptors.size(), static_cast<int>(kTick.count()));
  const bool has_spoken = ready > 0 && descriptors[0].revents != 0;
  // What it has said counts, even if it has ended since.
  if (!has_spoken && ready > 0 && descriptors[1].revents != 0) {
    die_of_its_end();
  }
  // A worker that speaks all the time is looked after all the same.
  if (has_spoken && Clock::now() - tick_ < kTick) {
    return;
  }
  tick_ = Clock::now();
  look_at_progress();
  if (!host_goes_on()) {
    const CallGivenUp given_up(subject(), Clock::now() - step_began_);
    (void)end_it();
    throw given_up;
  }
  check_limits();
}

bool WorkerLink::host_goes_on() {
  return settings_.waiting == nullptr ||
         settings_.waiting->go_on({subject(), step_began_, place(questions_.size()).value_or(0)});
}

void WorkerLink::look_at_progress() {
  const uint32_t steps = process_.page().steps.load(std::memory_order_acquire);
  if (steps != steps_) {
    steps_ = steps;
    step_began_ = Clock::now();
  }
}

void WorkerLink::check_limits() {
  if (is_hurried_) {
    if (Clock::now() - call_began_ >= settings_.patience) {
      die(Cause::hung, 0);
    }
    return;
  }
  const double all = settings_.limit_of_all_seconds;
  if (all > 0 && seconds_since(settings_.begin) >= all) {
    die(Cause::out_of_time, 0);
  }
  const double limit = settings_.limit_seconds;
  if (limit > 0 && (seconds_since(step_began_) >= limit ||
                    seconds_since(call_began_) >=
                        std::max(limit * kMostCallsOfAMessage, kLongestMessageSeconds))) {
    die(Cause::hung, 0);
  }
}

void WorkerLink::refuse(const Refused& refused) {
  if (refused.fault > static_cast<uint8_t>(Fault::item)) {
    throw BadMessage("a fault of no known kind");
  }
  throw HostError(static_cast<Fault>(refused.fault), refused.message, refused.status);
}

void WorkerLink::die_of_its_end() {
  constexpr std::chrono::milliseconds kPatience{500};  // between its last word and its end
  const auto end = process_.wait(kPatience);
  if (!end || (!end->by_signal && end->number == kWorkerLostSocket)) {
    die(Cause::deaf, 0);
  }
  die(end->by_signal ? Cause::crashed : Cause::ended, end->number);
}

void WorkerLink::die(Cause cause, int number) {
  const CallSubject about = subject();
  const std::string name = subject_text(about);
  const double waited = seconds_since(step_began_);
  const std::string left_behind = end_it();
  const auto death = [&](const std::string& text) {
    return WorkerDeath(cause, number, about, text + left_behind);
  };
  switch (cause) {
    case Cause::hung:
      throw death(fmt::format(
          "{} did not answer within {} s", name,
          is_hurried_ ? duration<double>(settings_.patience).count() : settings_.limit_seconds));
    case Cause::out_of_time:
      throw death(fmt::format("not done within {} s: {} has not answered for {:.1f} s",
                              settings_.limit_of_all_seconds, name, waited));
    default:
      throw death(fmt::format("{} while {} was {}", what_happened(cause, number), name,
                              about.kind == CallSubject::Kind::module ? "at work" : "asked for"));
  }
}

std::string WorkerLink::end_it() {
  constexpr std::chrono::milliseconds kToSave{1500};
  is_ended_ = true;
  if (records_) {
    process_.ask_to_end();
    (void)process_.wait(kToSave);
  }
  return process_.kill() ? "" : "; the kernel holds its process, which is left behind";
}

std::string WorkerLink::part() {
  if (is_ended_) {
    return "";
  }
  shutdown(process_.socket(), SHUT_WR);
  asked_ = {};
  questions_ = {};
  step_began_ = Clock::now();
  const auto until = step_began_ + settings_.patience;
  std::optional<ProcessEnd> end;
  while (!(end = process_.wait(kTick)) && Clock::now() < until && host_goes_on()) {
  }
  if (!end) {
    return "the device library keeps its process from ending" + end_it();
  }
  return end->by_signal || end->number != 0
             ? what_happened(end->by_signal ? Cause::crashed : Cause::ended, end->number) +
                   " at its end"
             : "";
}

}  // namespace kova_host
