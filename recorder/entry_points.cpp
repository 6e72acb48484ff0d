// The exported functions: every call is forwarded as it is, and then recorded. Nothing is thrown
// here, and errno is the device library's.
#include <pthread.h>

#include <atomic>
#include <cerrno>
#include <mutex>
#include <new>

#include "recorder/kova_device_recorder.h"
#include "recorder/recorder.h"

#define KOVA_RECORDER_EXPORT extern "C" __attribute__((visibility("default")))

namespace kova_recorder {
namespace {

// Made by the first call, since this library is loaded into every program that the environment is
// handed on to; and never destroyed, since calls may come when all else is.
std::atomic<Recorder*> instance = nullptr;
Recorder* parents_instance = nullptr;

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

// A child has only the thread that forked: whatever another one holds is waited for before. The
// device library may fork while it is opened, by the thread that makes the recorder.
void before_fork() {
  if (!is_making) {
    making.lock();
  }
  if (Recorder* recorder = instance) {
    recorder->before_fork();
  }
}

void end_fork() {
  if (!is_making) {
    making.unlock();
  }
}

void after_fork_in_parent() {
  if (Recorder* recorder = instance) {
    recorder->after_fork();
  }
  end_fork();
}

void after_fork_in_child() {
  if (Recorder* recorder = instance) {
    recorder->after_fork_in_child();
    if (recorder->is_by_process()) {
      parents_instance = recorder;
      instance = nullptr;
    }
  }
  end_fork();
}

// When this library is loaded, since a fork may come in the middle of the first call.
__attribute__((constructor)) void watch_forks() {
  static_cast<void>(pthread_atfork(before_fork, after_fork_in_parent, after_fork_in_child));
}

Recorder* make_recorder() noexcept {
  const std::lock_guard lock(making);
  if (instance == nullptr) {
    const Inside inside;
    is_making = true;
    instance = new (std::nothrow) Recorder;
    is_making = false;
  }
  return instance;
}

// Null without memory, and for what the device library calls while it is being opened.
Recorder* recorder() noexcept {
  Recorder* made = instance.load(std::memory_order_acquire);
  return made != nullptr || is_inside ? made : make_recorder();
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
