// Answers the parent's questions one after the other, until there are no more.
#include "tools/host/session/worker.h"

#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <thread>

#include "tools/host/session/local_host.h"
#include "tools/host/session/worker_messages.h"
#include "tools/host/system/errors.h"
#include "tools/host/system/json_writer.h"

#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define KOVA_SANITIZED 1
#endif
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define KOVA_SANITIZED 1
#endif

namespace kova_host {
namespace {

using std::chrono::steady_clock;

// The parent has gone, or says what no parent says: there is nobody to tell.
struct ParentLost {};

[[noreturn]] void end_without_socket() {
  if (errno == EBADF || errno == ENOTSOCK || errno == ENOTCONN) {
    _exit(kWorkerLostSocket);
  }
  throw ParentLost();
}

void limit(int resource, rlim_t most) {
  rlimit now{};
  if (getrlimit(static_cast<__rlimit_resource>(resource), &now) == 0 && now.rlim_max > most) {
    const rlimit lower{most, most};
    setrlimit(static_cast<__rlimit_resource>(resource), &lower);
  }
}

// What the parent has is not the library's: descriptors, and the service manager's ear. Nothing is
// left behind when the parent is killed, and what the library has in memory lands in no file.
bool settle_in(pid_t parent) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) {
    return false;  // it died before the line above
  }
  close_range(kWorkerPage + 1, ~0U, 0);
  for (const char* name : {"NOTIFY_SOCKET", "WATCHDOG_USEC", "WATCHDOG_PID", "LISTEN_FDS",
                           "LISTEN_PID", "JOURNAL_STREAM"}) {
    unsetenv(name);
  }
  limit(RLIMIT_CORE, 0);
  limit(RLIMIT_NOFILE, 256);
#ifndef KOVA_SANITIZED  // whose shadow is larger than any limit
  limit(RLIMIT_AS, rlim_t{1} << 30);
#endif
  return true;
}

// A recording ends in order even while the device library hangs: the parent asks by SIGTERM then.
// Blocked before any library can start a thread.
void keep_recording_at_sigterm(LocalHost& host) {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  std::thread([&host, signals] {
    int signal = 0;
    sigwait(&signals, &signal);
    _exit(host.end_recording(true).empty() ? EXIT_SUCCESS : EXIT_FAILURE);
  }).detach();
}

class Worker {
 public:
  explicit Worker(Whereabouts& page) : page_(page), host_(page) {}

  [[noreturn]] void serve() {
    for (;;) {
      answer(next_frame());
    }
  }

 private:
  Frame next_frame();
  void send(const std::string& text) const;
  void answer(const Frame& frame);
  void answer_hello(const Frame& frame);
  void answer_load(const Frame& frame);
  void answer_capability();
  void answer_read(const Frame& frame);
  void answer_codes(const Frame& frame);

  template <typename Message>
  void reply(const Message& message) const {
    send(packed(message));
  }
  void reply_done(uint32_t status) const {
    Done done;
    done.status = status;
    reply(done);
  }

  Whereabouts& page_;
  LocalHost host_;
  FrameReader reader_;
};

Frame Worker::next_frame() {
  for (;;) {
    if (auto frame = reader_.next()) {
      return *frame;
    }
    std::array<char, 16384> bytes{};
    const ssize_t size = recv(kWorkerSocket, bytes.data(), bytes.size(), 0);
    if (size == 0) {
      throw ParentLost();
    }
    if (size < 0 && errno != EINTR) {
      end_without_socket();
    }
    reader_.add({bytes.data(), static_cast<size_t>(std::max<ssize_t>(size, 0))});
  }
}

void Worker::send(const std::string& text) const {
  size_t done = 0;
  while (done < text.size()) {
    const ssize_t size =
        ::send(kWorkerSocket, text.data() + done, text.size() - done, MSG_NOSIGNAL);
    if (size < 0 && errno != EINTR) {
      end_without_socket();
    }
    done += static_cast<size_t>(std::max<ssize_t>(size, 0));
  }
}

void Worker::answer(const Frame& frame) {
  try {
    switch (frame.type) {
      case MessageType::hello:
        return answer_hello(frame);
      case MessageType::load:
        return answer_load(frame);
      case MessageType::leave_out:
        host_.leave_out(unpacked<LeaveOut>(frame).codes);
        return reply_done(0);
      case MessageType::start:
        return reply_done(host_.start());
      case MessageType::stop:
        host_.end();
        return reply_done(0);
      case MessageType::capability:
        return answer_capability();
      case MessageType::read:
        return answer_read(frame);
      case MessageType::write: {
        const auto [id, value] = unpacked<Write>(frame);
        return reply_done(host_.write(
            id, value.integer ? Number(*value.integer) : Number(value.real.value_or(0))));
      }
      case MessageType::read_codes:
        return answer_codes(frame);
      case MessageType::diagnose:
        return reply(packed_diagnosis(host_.diagnose()));
      case MessageType::redacted:
        return reply(RedactedCodes{host_.redacted(unpacked<Redacted>(frame).codes)});
      case MessageType::recorded_codes: {
        Moments message;
        for (const RecordedCode& recorded : host_.recorded_codes()) {
          message.moments.push_back({recorded.code, recorded.milliseconds});
        }
        return reply(message);
      }
      case MessageType::set_time:
        host_.set_time(unpacked<SetTime>(frame).milliseconds);
        return reply_done(0);
      case MessageType::recording_trouble:
        return reply(Text{host_.recording_trouble()});
      case MessageType::end_recording:
        return reply(Text{host_.end_recording(unpacked<EndRecording>(frame).keep)});
      default:
        throw ParentLost();
    }
  } catch (const HostError& error) {
    reply(Refused{static_cast<uint8_t>(error.fault()), error.what(), error.status()});
  }
}

void Worker::answer_hello(const Frame& frame) {
  if (unpacked<Hello>(frame).version != kWorkerVersion) {
    throw ParentLost();
  }
  reply(Welcome());
}

void Worker::answer_load(const Frame& frame) {
  const Loading loading = loading_of(unpacked<Load>(frame));
  if (loading.recording) {
    keep_recording_at_sigterm(host_);
  }
  const Loaded loaded = host_.load(loading);
  reply(LoadedAnswer{loaded.module_file, loaded.recorded_ms});
}

void Worker::answer_capability() {
  const Document document = host_.capability();
  DocumentAnswer answer;
  answer.status = document.status;
  if (document.document != nullptr) {
    answer.json = json_document(document.document.get(), JsonLayout::one_line);
  }
  reply(answer);
}

void Worker::answer_read(const Frame& frame) {
  constexpr std::chrono::milliseconds kMostAtOnce{20};
  const auto questions = unpacked<Read>(frame).questions;
  Answers answers;
  auto sent = steady_clock::now();
  for (size_t i = 0; i < questions.size(); ++i) {
    page_.place.store(static_cast<uint32_t>(i), std::memory_order_relaxed);
    page_.steps.fetch_add(1, std::memory_order_release);
    answers.answers.push_back(packed_answer(host_.read_one(question_of(questions[i]))));
    if (const auto now = steady_clock::now(); now - sent > kMostAtOnce) {
      reply(answers);
      answers.answers.clear();
      sent = now;
    }
  }
  page_.place.store(Whereabouts::kNoPlace, std::memory_order_release);
  if (!answers.answers.empty()) {
    reply(answers);
  }
}

void Worker::answer_codes(const Frame& frame) {
  Codes codes;
  for (const DeviceAnswer& answer : host_.read_codes(unpacked<ReadCodes>(frame).codes)) {
    codes.answers.push_back({answer.status, answer.word});
  }
  reply(codes);
}

// Where the parent looks, if it could make such a page.
Whereabouts& shared_page() {
  static Whereabouts own;
  struct stat status {};
  if (fstat(kWorkerPage, &status) != 0 || status.st_size < static_cast<off_t>(sizeof own)) {
    return own;
  }
  void* memory =
      mmap(nullptr, sizeof(Whereabouts), PROT_READ | PROT_WRITE, MAP_SHARED, kWorkerPage, 0);
  return memory == MAP_FAILED ? own : *static_cast<Whereabouts*>(memory);
}

int work(pid_t parent) {
  if (!settle_in(parent)) {
    return EXIT_FAILURE;
  }
  Whereabouts& page = shared_page();
  close(kWorkerPage);
  try {
    Worker(page).serve();
  } catch (const ParentLost&) {
    return EXIT_SUCCESS;
  } catch (const std::exception&) {
    return EXIT_FAILURE;
  }
}

}  // namespace

std::optional<int> run_if_worker(int argc, char** argv) {
  if (argc != 3 || std::strcmp(argv[1], kWorkerArgument) != 0) {
    return std::nullopt;
  }
  pid_t parent = 0;
  std::from_chars(argv[2], argv[2] + std::strlen(argv[2]), parent);
  return work(parent);
}

}  // namespace kova_host
