// The parent's side of a worker: its questions, and what becomes of them within their time.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "tools/host/session/call_subject.h"
#include "tools/host/session/worker_messages.h"
#include "tools/host/session/worker_process.h"
#include "tools/host/system/errors.h"

namespace kova_host {

// A call that has not come back yet.
struct CallUnderWay {
  CallSubject subject;
  std::chrono::steady_clock::time_point since;  // of the single item or code
  size_t place = 0;                             // of the item in its sweep, from 0
};

// What a host does while it waits for the device.
class Waiting {
 public:
  virtual ~Waiting() = default;
  // What wakes it beside the device.
  virtual std::vector<int> descriptors() const { return {}; }
  // Called whenever one of those is readable, and every 50 ms. False gives the call up, and the
  // worker with it.
  virtual bool go_on(const CallUnderWay& call) = 0;
};

enum class WorkerEvent {
  trouble,   // a worker has died, or an item is left out
  recovery,  // an item answers again
  bad_end,   // what went wrong when nothing more was asked
};

struct WorkerSettings {
  std::string program = "/proc/self/exe";  // which calls run_if_worker()
  double limit_seconds = 0;                // of a single call of the device; 0 for none
  // Of all calls together, from `begin` on; 0 for none.
  double limit_of_all_seconds = 0;
  std::chrono::steady_clock::time_point begin = std::chrono::steady_clock::now();
  // What the module's end and the process's may take, each.
  std::chrono::milliseconds patience{1000};
  Waiting* waiting = nullptr;  // outlives the worker
  // A read that outlasts the limit is one that fails, like one on which the worker crashes, and the
  // worker is started again; or else it ends the work with WorkerDeath.
  bool outlives_hangs = false;
  // Told in one line each; may be empty.
  std::function<void(WorkerEvent event, const std::string& text)> tell = {};
};

// The worker is gone, or as good as gone.
class WorkerDeath : public HostError {
 public:
  enum class Cause { crashed, ended, deaf, hung, out_of_time, talked_nonsense, not_started };

  WorkerDeath(Cause cause, int number, const CallSubject& subject, const std::string& message)
      : HostError(Fault::no_device, message), cause_(cause), number_(number), subject_(subject) {}

  Cause cause() const { return cause_; }
  const CallSubject& subject() const { return subject_; }
  // "the device library crashed (signal 11)", "has not answered for 10 s"
  std::string reason(double limit_seconds) const;

 private:
  Cause cause_;
  int number_;  // signal or exit code
  CallSubject subject_;
};

// The call that Waiting::go_on() gave up.
class CallGivenUp : public std::runtime_error {
 public:
  CallGivenUp(const CallSubject& subject, std::chrono::steady_clock::duration waited)
      : std::runtime_error("interrupted"), subject_(subject), waited_(waited) {}
  const CallSubject& subject() const { return subject_; }
  // For the single item or code.
  std::chrono::steady_clock::duration waited() const { return waited_; }

 private:
  CallSubject subject_;
  std::chrono::steady_clock::duration waited_;
};

class WorkerLink {
 public:
  // Starts a worker. Throws WorkerDeath if none can be started.
  explicit WorkerLink(const WorkerSettings& settings);

  // Asks; what is asked at once is answered in the same order. `subject` is what it is about.
  template <typename Message>
  void ask(const Message& message, CallSubject subject = {}) {
    send(packed(message), subject);
  }

  // The next answer. Throws what the worker has met instead, WorkerDeath, and CallGivenUp; after
  // the last two the worker is gone.
  template <typename Message>
  Message answer(CallSubject subject = {}, std::span<const ItemQuestion> questions = {}) {
    const Frame frame = next_frame(subject, questions);
    try {
      if (frame.type == MessageType::refused) {
        refuse(unpacked<Refused>(frame));
      }
      return unpacked<Message>(frame);
    } catch (const BadMessage&) {
      die(WorkerDeath::Cause::talked_nonsense, 0);
    }
  }

  // What `make` makes of something that has come; it throws BadMessage where that cannot be.
  template <typename Make>
  auto checked(const Make& make) {
    try {
      return make();
    } catch (const BadMessage&) {
      die(WorkerDeath::Cause::talked_nonsense, 0);
    }
  }
  template <typename Message, typename Make>
  auto answer_as(const Make& make) {
    const auto message = answer<Message>();
    return checked([&] { return make(message); });
  }

  // Of the device code at which the worker is, if it is at one.
  std::optional<uint32_t> code() const;
  // Of the question at which it is; less than `count`.
  std::optional<size_t> place(size_t count) const;

  // True once it was ended from here.
  bool is_over() const { return is_ended_; }
  // From now on nothing takes longer than the settings' patience.
  void hurry() { is_hurried_ = true; }
  // Lets the process end in order. What has gone wrong, "" for nothing.
  std::string part();
  // While it records: it is asked to save that before it is killed.
  void records() { records_ = true; }

 private:
  using Clock = std::chrono::steady_clock;

  void send(const std::string& text, const CallSubject& subject);
  Frame next_frame(const CallSubject& subject, std::span<const ItemQuestion> questions);
  // Waits until the socket is ready for `events`.
  void wait_for(short events);
  void look_at_progress();
  void check_limits();
  [[noreturn]] static void refuse(const Refused& refused);
  [[noreturn]] void die_of_its_end();
  [[noreturn]] void die(WorkerDeath::Cause cause, int number);
  // "", or what to add of a process that cannot be killed.
  std::string end_it();
  bool host_goes_on();
  CallSubject subject() const;

  const WorkerSettings& settings_;
  WorkerProcess process_;
  FrameReader reader_;
  bool records_ = false;
  bool is_hurried_ = false;
  bool is_ended_ = false;  // by us
  CallSubject asked_;      // what is waited for
  std::span<const ItemQuestion> questions_;
  uint32_t steps_ = 0;      // as last seen
  Clock::time_point tick_;  // when the host was asked last
  Clock::time_point call_began_;
  Clock::time_point step_began_;
};

}  // namespace kova_host
