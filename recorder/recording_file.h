// The file of a recording. It grows beside its later place, under the name with ".part" behind it,
// and is a whole machine description at any time: a crash loses only what has not been added yet.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <ctime>
#include <string>

#include "recorder/settings.h"

namespace kova_recorder {

/// What the note in the file tells of the recording.
struct Summary {
  std::time_t begin = 0;
  std::uint64_t seconds = 0;
  std::uint64_t reads = 0;
  std::uint64_t failed_reads = 0;
  std::uint64_t writes = 0;
  std::uint64_t failed_writes = 0;
  bool is_redacted = false;
  std::string ending;  // why it is no longer than it is, or ""
};

class RecordingFile {
 public:
  /// Begins the file. The settings' name is what it gets in the end, or a link to it. Until then
  /// only the caller can read it. Throws RecordingError if it cannot be written there, is being
  /// recorded by another process, or a stranger has been there before.
  explicit RecordingFile(const Settings& settings);
  ~RecordingFile();
  RecordingFile(const RecordingFile&) = delete;
  RecordingFile& operator=(const RecordingFile&) = delete;

  /// Adds lines of moments; the recording then lasts `length_ms`. Throws RecordingError, the disk
  /// is full for instance; then the file is what it was before.
  void append(const std::string& moments, std::uint64_t length_ms);

  /// Replaces the note, which stands at the beginning and takes the same room whatever it says.
  void write_note(const Summary& summary);

  /// On the disk, for a machine that stops dead.
  void sync();

  /// Moves the file to its own name, in place of what was there, with that one's owner and mode.
  void finish();

  /// Takes it away again, and leaves alone what it was to replace.
  void remove();

  std::uint64_t size() const { return size_; }
  bool is_empty() const { return is_empty_; }

  /// Lets go of it without another look at it: it is the parent process's.
  void abandon();

 private:
  void open_part();
  void create_part();
  void lock_part();
  void keep_crashed() const;
  void write_at(std::uint64_t offset, const std::string& text);
  [[noreturn]] void fail(const char* what) const;

  std::string file_;
  std::string part_;
  int descriptor_ = -1;
  mode_t mask_;  // the process's umask when the recording began
  std::uint64_t size_ = 0;
  std::string tail_;  // closes what the file has opened
  bool is_empty_ = true;
  bool is_entered_ = false;  // in its folder, on the disk
};

}  // namespace kova_recorder
