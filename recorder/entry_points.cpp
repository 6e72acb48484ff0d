// The exported functions: every call is forwarded as it is, and then recorded. Nothing is thrown
// here, and errno is the device library's.
#include <pthread.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <mutex>
#include <new>
#include <thread>
#include <utility>

#include "recorder/kova_device_recorder.h"
#include "recorder/recorder.h"

#define KOVA_RECORDER_EXPORT extern "C" __attribute__((visibility("default")))

namespace kova_recorder {
namespace {

// Made by the first call, since this library is loaded into every program that the environment is
// handed on to; and never destroyed, since calls may come when all else is.
std::atomic<Recorder*> instance = nullptr;

// True while the device library is at work: what it calls itself is not the host's call.
thread_local bool is_inside = false;

class Inside {
 public:
  Inside() { is_inside = true; }
  ~Inside() { is_inside = false; }
  Inside(const Inside&) = delete;
  Inside& operator=(const Inside&) = delete;
};

// Held while the recorder is made, by the thread that makes it.
std::mutex making;
thread_local bool is_making = false;
Recorder* made = nullptr;  // before it is the instance
Recorder* parents_recorder = nullptr;
std::atomic<int> forks_under_way = 0;

// A child has only the thread that forked: whatever another one holds is waited for before. The
// device library may fork while it is opened, by the thread that makes the recorder.
void before_fork() {
  if (!is_making) {
    ++forks_under_way;
    making.lock();
  }
  if (made != nullptr) {
    made->before_fork();
  }
}

void after_fork_in_parent() {
  if (made != nullptr) {
    made->after_fork();
  }
  if (!is_making) {
    making.unlock();
    --forks_under_way;
  }
}

void after_fork_in_child() {
  if (made != nullptr) {
    made->after_fork_in_child();
    if (made->is_by_process()) {
      parents_recorder = std::exchange(made, nullptr);
      instance = nullptr;
    }
  }
  forks_under_way = 0;
  if (!is_making) {
    making.unlock();
  }
}

// When this library is loaded, since a fork may come in the middle of the first call.
__attribute__((constructor)) void watch_forks() {
  static_cast<void>(pthread_atfork(before_fork, after_fork_in_parent, after_fork_in_child));
}

// A fork that has waited for the device library to be opened passes over the handlers which that
// has just registered for its own locks. It goes first, while nobody has called the library yet.
void let_forks_go_first(std::unique_lock<std::mutex>& lock) {
  while (forks_under_way > 0) {
    lock.unlock();
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    lock.lock();
  }
}

Recorder* make_recorder() noexcept {
  std::unique_lock lock(making);
  if (made == nullptr) {
    const Inside inside;
    is_making = true;
    made = new (std::nothrow) Recorder;
    is_making = false;
  }
  if (instance == nullptr) {
    let_forks_go_first(lock);
    instance = made;
  }
  return instance;
}

// Null without memory, and for what the device library calls while it is being opened.
Recorder* recorder() noexcept {
  Recorder* const found = instance.load(std::memory_order_acquire);
  return found != nullptr || is_inside ? found : make_recorder();
}

// As above for a call of the agent's, in whose errno the making leaves no trace.
Recorder* recorder_for_call() noexcept {
  const int error = errno;
  Recorder* const found = recorder();
  errno = error;
  return found;
}

// Runs a forwarded call; what it records leaves no trace in errno.
template <typename Call, typename Record>
std::uint32_t forward(Call call, Record record) {
  if (is_inside) {
    return call();
  }
  std::uint32_t status = 0;
  {
    const Inside inside;
    status = call();
  }
  const int error = errno;
  record(status);
  errno = error;
  return status;
}

std::uint32_t no_library(Recorder* recorder) noexcept {
  if (recorder != nullptr) {
    recorder->tell();
  }
  return RECORDER_STATUS_NO_LIBRARY;
}

__attribute__((destructor)) void finish_at_exit() {
  if (Recorder* recorder = instance) {
    recorder->finish();
  }
}

}  // namespace
}  // namespace kova_recorder

using kova_recorder::Recorder;

KOVA_RECORDER_EXPORT uint32_t KovaDeviceGetValue(uint32_t code, uint32_t* value) {
  Recorder* recorder = kova_recorder::recorder_for_call();
  if (recorder == nullptr || recorder->library().get == nullptr) {
    return kova_recorder::no_library(recorder);
  }
  const auto call = [=] { return recorder->library().get(code, value); };
  if (value == nullptr) {
    return call();
  }
  // A failing call may store a word: that shows when it is another one.
  const std::uint32_t before = *value;
  return kova_recorder::forward(call, [=](std::uint32_t status) {
    kova_sim::Answer answer{.status = status, .word = *value};
    if (status != 0 && *value == before) {
      answer.word.reset();
    }
    recorder->record_read(code, answer);
  });
}

KOVA_RECORDER_EXPORT uint32_t KovaDeviceSetValue(uint32_t code, uint32_t value) {
  Recorder* recorder = kova_recorder::recorder_for_call();
  if (recorder == nullptr || recorder->library().set == nullptr) {
    return kova_recorder::no_library(recorder);
  }
  return kova_recorder::forward(
      [=] { return recorder->library().set(code, value); },
      [=](std::uint32_t status) { recorder->record_write(code, value, status); });
}

KOVA_RECORDER_EXPORT const char* KovaRecorderError(void) {
  Recorder* recorder = kova_recorder::recorder();
  return recorder == nullptr ? "out of memory" : recorder->error();
}

KOVA_RECORDER_EXPORT const char* KovaRecorderFile(void) {
  Recorder* recorder = kova_recorder::recorder();
  return recorder == nullptr ? nullptr : recorder->file();
}

KOVA_RECORDER_EXPORT uint32_t KovaRecorderHasLibrary(void) {
  Recorder* recorder = kova_recorder::recorder();
  return recorder != nullptr && recorder->library().get != nullptr ? 1 : 0;
}

KOVA_RECORDER_EXPORT void KovaRecorderDiscard(void) {
  if (Recorder* recorder = kova_recorder::recorder()) {
    recorder->discard();
  }
}

KOVA_RECORDER_EXPORT void KovaRecorderSetTime(uint64_t milliseconds) {
  if (Recorder* recorder = kova_recorder::recorder()) {
    recorder->set_time(milliseconds);
  }
}

KOVA_RECORDER_EXPORT uint32_t KovaRecorderFinish(void) {
  Recorder* recorder = kova_recorder::recorder();
  return recorder != nullptr && recorder->finish() ? 0 : 1;
}
