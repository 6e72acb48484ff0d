// The recording of this process: takes the calls in, and writes them down in a thread of its own,
// so that no call waits for the disk.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "recorder/change_filter.h"
#include "recorder/recorded_library.h"
#include "recorder/recording_file.h"
#include "recorder/settings.h"

namespace kova_recorder {

/// All functions may be called from any thread; none throws.
class Recorder {
 public:
  /// Opens the device library and begins the file, as the environment says.
  Recorder() noexcept;
  Recorder(const Recorder&) = delete;
  Recorder& operator=(const Recorder&) = delete;

  const RecordedLibrary& library() const { return library_; }

  void record_read(std::uint32_t code, const kova_sim::Answer& answer) noexcept;
  void record_write(std::uint32_t code, std::uint32_t word, std::uint32_t status) noexcept;

  /// From now on calls are at this time, unless it lies before the last one.
  void set_time(std::uint64_t ms) noexcept;

  /// Ends the recording; true if all of it is in its file.
  bool finish() noexcept;

  /// Ends the recording; the file of that name stays as it was.
  void discard() noexcept;

  /// Why nothing is recorded, or no more; null while all is well. The host that asks is told
  /// here, and stderr is no longer.
  const char* error() noexcept;

  /// The name that the recording gets, with its folder; null if none is recorded.
  const char* file() const noexcept;

  /// One line on stderr, if there is something to tell that nobody has been told.
  void tell() noexcept;

  /// Around fork(). In the child nothing is recorded any more.
  void before_fork() { mutex_.lock(); }
  void after_fork() { mutex_.unlock(); }
  void after_fork_in_child() noexcept;

  /// True if a child records as well, into a file of its own.
  bool is_by_process() const { return settings_.file_is_by_process; }

 private:
  using Clock = std::chrono::steady_clock;
  using Lock = std::unique_lock<std::mutex>;

  void begin();
  void tell_once();
  const char* reason() const;
  template <typename Record>
  void record(Record record_call) noexcept;
  std::uint64_t elapsed_ms() const;
  std::uint64_t next_ms();
  std::uint64_t length_ms() const;
  void keep(const kova_sim::RecordedCall& call);
  void end(const std::string& reason, bool failed) noexcept;
  void note_end(const std::string& reason, bool failed) noexcept;
  Lock lock_at_last() noexcept;

  void write_down() noexcept;
  void write_pending(Lock& lock);
  void look_for_stop_request();
  void close_file(Lock& lock) noexcept;

  Settings settings_;
  RecordedLibrary library_;

  std::mutex mutex_;  // of all that follows but the file, which is the thread's own
  std::condition_variable wake_;
  bool is_recording_ = false;
  bool has_failed_ = false;
  bool is_discarded_ = false;
  bool is_told_ = false;            // what has failed, or the host asks for it
  std::list<std::string> reasons_;  // of the end; kept, since hosts have pointers to them
  ChangeFilter filter_{{}};
  Summary summary_;
  std::vector<kova_sim::RecordedCall> pending_;
  Clock::time_point start_;
  std::uint64_t ms_ = 0;       // of the last call, or what the host has set
  std::uint64_t call_ms_ = 0;  // of the last call
  std::uint64_t calls_ = 0;
  bool host_sets_time_ = false;

  std::unique_ptr<RecordingFile> file_;
  std::uint64_t answers_ = 0;  // in the file
  Summary written_;            // what is in the file
  Clock::time_point synced_;
  std::thread thread_;
  pid_t owner_ = -1;  // the process that has the thread
};

}  // namespace kova_recorder
