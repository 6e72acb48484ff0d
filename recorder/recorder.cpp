// The recording of this process.
#include "recorder/recorder.h"

#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "recorder/file_owner.h"
#include "simulator/agent_stderr.h"

namespace kova_recorder {
namespace {

using kova_sim::Answer;
using kova_sim::RecordedCall;

// What a crash of the process may cost, and what one of the machine may.
constexpr std::chrono::seconds WRITE_INTERVAL{1};
constexpr std::chrono::seconds SYNC_INTERVAL{5};

// Answers in memory while the disk is slow; 24 MiB.
constexpr std::size_t MAX_PENDING = std::size_t{1} << 19;

// Room in the largest description that can be read for what closes it.
constexpr std::uint64_t CLOSING_ROOM = 1024;

// What reading the description takes beside its text and its answers.
std::uint64_t memory_of_codes(std::size_t codes) {
  return codes * (kova_sim::CODE_MEMORY + kova_sim::TRACE_MEMORY) + 16 * CLOSING_ROOM;
}

// Starts a thread that gets none of the host's signals.
template <typename Work>
std::thread start_thread(Work work) {
  sigset_t all;
  sigset_t previous;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &previous);
  std::thread thread;
  try {
    thread = std::thread(work);
  } catch (const std::system_error&) {
    pthread_sigmask(SIG_SETMASK, &previous, nullptr);
    throw RecordingError("no thread can be started to write the recording");
  }
  pthread_sigmask(SIG_SETMASK, &previous, nullptr);
  return thread;
}

void lock_again(std::unique_lock<std::mutex>& lock) {
  if (!lock) {
    lock.lock();
  }
}

}  // namespace

Recorder::Recorder() noexcept {
  try {
    begin();
  } catch (const RecordingError& error) {
    end(error.what(), true);
  } catch (...) {
    end("out of memory", true);
  }
}

void Recorder::begin() {
  const char* library = std::getenv("KOVA_RECORD_LIBRARY");
  library_ = open_device_library(library == nullptr ? "" : library);
  if (!library_.error.empty()) {
    throw RecordingError(library_.error);
  }
  settings_ = Settings::from_environment();
  if (settings_.file.empty()) {
    end("KOVA_RECORD_FILE names no file", false);
    return;
  }
  filter_ = ChangeFilter(settings_.redacted);
  summary_.is_redacted = !settings_.redacted.empty();
  summary_.begin = std::time(nullptr);
  file_ = std::make_unique<RecordingFile>(settings_);
  start_ = synced_ = Clock::now();
  is_recording_ = true;
  thread_ = start_thread([this] { write_down(); });
  owner_ = getpid();
}

// Called with the lock, or before there is a thread. What has gone wrong is told rather than that
// the recording is over, and of that the first.
void Recorder::end(const std::string& reason, bool failed) noexcept {
  note_end(reason, failed);
  wake_.notify_all();
}

void Recorder::note_end(const std::string& reason, bool failed) noexcept {
  is_recording_ = false;
  if (reasons_.empty() || (failed && !has_failed_)) {
    has_failed_ = failed;
    try {
      reasons_.push_back(reason);
    } catch (...) {
      // Without memory for a reason it is the one that needs none.
    }
  }
}

const char* Recorder::reason() const {
  return reasons_.empty() ? "out of memory" : reasons_.back().c_str();
}

void Recorder::tell() noexcept {
  const Lock lock(mutex_);
  tell_once();
}

void Recorder::tell_once() {
  if (has_failed_ && !is_told_) {
    is_told_ = true;
    kova_sim::tell_on_stderr("libKOVADeviceRecorder", reason());
  }
}

const char* Recorder::file() const noexcept {
  return settings_.file.empty() ? nullptr : settings_.file.c_str();
}

const char* Recorder::error() noexcept {
  const Lock lock(mutex_);
  is_told_ = true;
  return is_recording_ ? nullptr : reason();
}

std::uint64_t Recorder::elapsed_ms() const {
  return static_cast<std::uint64_t>(
      std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start_).count());
}

std::uint64_t Recorder::next_ms() {
  if (settings_.step_ms) {
    ms_ = calls_ * *settings_.step_ms;
  } else if (!host_sets_time_) {
    ms_ = elapsed_ms();
  }
  ++calls_;
  call_ms_ = ms_;
  return ms_;
}

std::uint64_t Recorder::length_ms() const {
  std::uint64_t length = ms_;
  if (settings_.step_ms) {
    length = calls_ * *settings_.step_ms;
  } else if (!host_sets_time_) {
    length = elapsed_ms();
  }
  return std::max(length, call_ms_ + 1);
}

void Recorder::keep(const RecordedCall& call) {
  if (pending_.size() >= MAX_PENDING) {
    end("recording stopped: answers change faster than they can be written", true);
  } else if (filter_.codes() > kova_sim::MAX_CODES) {
    end("recording stopped: more than " + std::to_string(kova_sim::MAX_CODES) + " device codes",
        true);
  } else {
    pending_.push_back(call);
  }
}

template <typename Record>
void Recorder::record(Record record_call) noexcept {
  const Lock lock(mutex_);
  if (!is_recording_) {
    tell_once();
    return;
  }
  try {
    record_call();
  } catch (...) {
    end("recording stopped: out of memory", true);
  }
}

void Recorder::record_read(std::uint32_t code, const Answer& answer) noexcept {
  record([&] {
    ++summary_.reads;
    summary_.failed_reads += answer.status == 0 ? 0 : 1;
    if (const auto call = filter_.read(next_ms(), code, answer)) {
      keep(*call);
    }
  });
}

void Recorder::record_write(std::uint32_t code, std::uint32_t word, std::uint32_t status) noexcept {
  record([&] {
    ++summary_.writes;
    summary_.failed_writes += status == 0 ? 0 : 1;
    keep(filter_.write(next_ms(), code, word, status));
  });
}

void Recorder::set_time(std::uint64_t ms) noexcept {
  const Lock lock(mutex_);
  host_sets_time_ = true;
  ms_ = std::max(ms_, ms);
}

// At the end of the process the lock may be held for ever, by a thread that a signal handler has
// taken the way out of. The agent must end all the same.
Recorder::Lock Recorder::lock_at_last() noexcept {
  constexpr int TRIES = 200;
  Lock lock(mutex_, std::try_to_lock);
  for (int i = 0; i < TRIES && !lock; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    static_cast<void>(lock.try_lock());
  }
  return lock;
}

bool Recorder::finish() noexcept {
  std::thread thread;
  {
    const Lock lock = lock_at_last();
    if (!lock) {
      return false;
    }
    note_end("the recording is finished", false);
    if (owner_ == getpid()) {  // or else there is nobody to wake, but what the parent's thread left
      wake_.notify_all();
      thread.swap(thread_);
    }
  }
  if (thread.joinable()) {
    thread.join();
  }
  const Lock lock(mutex_);
  return !has_failed_;
}

void Recorder::discard() noexcept {
  {
    const Lock lock(mutex_);
    is_discarded_ = true;
  }
  finish();
}

void Recorder::after_fork_in_child() noexcept {
  // The thread is the parent's, and so is the file, which is in whatever state that thread had it.
  if (file_) {
    file_->abandon();
    static_cast<void>(file_.release());
  }
  owner_ = -1;
  // The condition variable is left alone: the parent's thread may have been at it.
  note_end("the recording is the parent process's", false);
  mutex_.unlock();
}

// ----- the thread -----

void Recorder::write_down() noexcept {
  Lock lock(mutex_);
  do {
    wake_.wait_for(lock, WRITE_INTERVAL, [this] { return !is_recording_; });
    try {
      look_for_stop_request();
      write_pending(lock);
    } catch (const RecordingError& error) {
      lock_again(lock);
      end("recording stopped: " + std::string(error.what()), true);
    } catch (...) {
      lock_again(lock);
      end("recording stopped: out of memory", true);
    }
  } while (is_recording_);
  close_file(lock);
}

void Recorder::look_for_stop_request() {
  const std::string request = settings_.file + ".stop";
  if (is_request(request)) {
    unlink(request.c_str());
    end("the recording is finished", false);
  }
}

void Recorder::write_pending(Lock& lock) {
  std::vector<RecordedCall> calls;
  calls.swap(pending_);
  const std::uint64_t length = length_ms();
  summary_.seconds = (settings_.step_ms ? elapsed_ms() : length) / 1000;
  const Summary summary = summary_;
  const std::uint64_t memory = memory_of_codes(filter_.codes());
  answers_ += calls.size();
  lock.unlock();
  const std::string moments = kova_sim::moments_text(calls);
  if (file_->size() + moments.size() + CLOSING_ROOM > kova_sim::MAX_FILE_SIZE) {
    throw RecordingError(settings_.file + ": has grown to 16 MiB");
  }
  if (file_->size() + moments.size() + memory + answers_ * kova_sim::ANSWER_MEMORY >
      kova_sim::MAX_MEMORY) {
    throw RecordingError(settings_.file + ": has as many answers as can be replayed");
  }
  file_->append(moments, length);
  written_ = summary;
  file_->write_note(summary);
  if (Clock::now() - synced_ >= SYNC_INTERVAL) {
    synced_ = Clock::now();
    file_->sync();
  }
  lock.lock();
}

void Recorder::close_file(Lock& lock) noexcept {
  try {
    written_.ending = has_failed_ ? "it stopped early" : "";
    const bool is_discarded = is_discarded_ || file_->is_empty();
    lock.unlock();
    if (is_discarded) {
      file_->remove();
    } else {
      file_->write_note(written_);
      file_->sync();
      file_->finish();
    }
    lock.lock();
  } catch (const std::exception& error) {
    lock_again(lock);
    end(error.what(), true);
  }
  tell_once();
}

}  // namespace kova_recorder
