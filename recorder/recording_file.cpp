// A machine description that grows at its end. Each addition overwrites the closing brackets with
// the new lines and closes them again, in one write.
#include "recorder/recording_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "recorder/file_owner.h"
#include "simulator/moment_writer.h"

namespace kova_recorder {
namespace {

constexpr std::size_t NOTE_ROOM = 400;

// Anybody may have put anything there: no link is followed, no pipe waited for.
constexpr int PART_FLAGS = O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;

std::string duration_text(std::uint64_t seconds) {
  const std::string hours = seconds < 3600 ? "" : std::to_string(seconds / 3600) + " h ";
  const std::string minutes = seconds < 60 ? "" : std::to_string(seconds / 60 % 60) + " min ";
  return hours + minutes + std::to_string(seconds % 60) + " s";
}

std::string count_text(std::uint64_t count, const char* what, std::uint64_t failed) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s") +
         (failed == 0 ? "" : " (" + std::to_string(failed) + " failed)");
}

std::string note_text(const Summary& summary) {
  std::tm time = {};
  gmtime_r(&summary.begin, &time);
  char begin[64];  // of numbers only, in whatever language
  std::snprintf(begin, sizeof begin, "%04d-%02d-%02d %02d:%02d:%02d", time.tm_year + 1900,
                time.tm_mon + 1, time.tm_mday, time.tm_hour, time.tm_min, time.tm_sec);
  return std::string("Recorded ") + begin + " UTC with release " KOVA_RELEASE ", for " +
         duration_text(summary.seconds) + ": " +
         count_text(summary.reads, "read", summary.failed_reads) + ", " +
         count_text(summary.writes, "write", summary.failed_writes) +
         (summary.is_redacted ? ", private words blanked" : "") +
         (summary.ending.empty() ? "" : "; " + summary.ending);
}

// The opening, as long whatever the note says: blanks between two members mean nothing.
std::string note_member(const std::string& note) {
  std::string text = "{\n\"note\": \"" + note.substr(0, NOTE_ROOM - 16) + "\",";
  text.append(NOTE_ROOM - text.size(), ' ');
  return text + "\n";
}

// All that stands before the first moment.
std::string head_text(const Settings& settings) {
  std::string text = note_member("");
  if (settings.step_ms) {
    text += "\"clock\": {\"step_ms\": " + std::to_string(*settings.step_ms) + "},\n";
  }
  std::string runs;
  for (const kova_sim::CodeRun& run : settings.redacted) {
    runs += (runs.empty() ? "\"" : ", \"") + kova_sim::format_hex(run.first) +
            (run.size() == 1 ? "" : ".." + kova_sim::format_hex(run.last)) + "\"";
  }
  if (!runs.empty()) {
    text += "\"redacted\": [" + runs + "],\n";
  }
  return text + "\"trace\": {\"moments\": [\n";
}

void sync_folder(const std::string& file) {
  const std::size_t slash = file.rfind('/');
  const std::string folder = slash == std::string::npos ? "." : file.substr(0, slash + 1);
  const int descriptor = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor >= 0) {
    fsync(descriptor);
    close(descriptor);
  }
}

}  // namespace

void RecordingFile::fail(const char* what) const {
  throw RecordingError(file_ + ": " + what + " (" + strerrorname_np(errno) + ")");
}

void RecordingFile::create_part() {
  descriptor_ = open(part_.c_str(), PART_FLAGS | O_CREAT | O_EXCL, S_IRUSR | S_IWUSR);
  if (descriptor_ < 0) {
    fail("cannot be written");
  }
}

void RecordingFile::lock_part() {
  if (flock(descriptor_, LOCK_EX | LOCK_NB) != 0) {
    close(descriptor_);
    throw RecordingError(file_ +
                         ": is being recorded by another process; %p in the name makes "
                         "it one file a process");
  }
}

// What a crash has left is worth the most: it is put aside, and none takes the place of another.
void RecordingFile::keep_crashed() const {
  constexpr int MAX_KEPT = 9;
  for (int i = 1; i <= MAX_KEPT; ++i) {
    const std::string kept = file_ + ".crashed" + (i == 1 ? "" : "-" + std::to_string(i));
    if (renameat2(AT_FDCWD, part_.c_str(), AT_FDCWD, kept.c_str(), RENAME_NOREPLACE) == 0) {
      return;
    }
    const bool is_able = errno != EINVAL && errno != ENOSYS;
    if (!is_able && link(part_.c_str(), kept.c_str()) == 0) {
      unlink(part_.c_str());
      return;
    }
    if (errno != EEXIST) {
      fail("what a crash has left cannot be put aside");
    }
  }
  throw RecordingError(file_ + ": .crashed to .crashed-9 are kept already; move them away");
}

// The file under its passing name: a new one, or the caller's own that a crash has left empty.
void RecordingFile::open_part() {
  descriptor_ = open(part_.c_str(), PART_FLAGS);
  if (descriptor_ < 0 && errno == ENOENT) {
    create_part();
    lock_part();
    return;
  }
  struct stat status = {};
  if (descriptor_ < 0 || fstat(descriptor_, &status) != 0) {
    fail("cannot be written");
  }
  if (!S_ISREG(status.st_mode) || status.st_uid != geteuid() || status.st_nlink > 1 ||
      fchmod(descriptor_, S_IRUSR | S_IWUSR) != 0) {
    close(descriptor_);
    throw RecordingError(part_ + ": is no file of this user's own");
  }
  lock_part();
  if (status.st_size > 0) {
    const int crashed = descriptor_;
    try {
      keep_crashed();
      create_part();
    } catch (...) {
      close(crashed);
      throw;
    }
    close(crashed);
    lock_part();
  }
}

RecordingFile::RecordingFile(const Settings& settings)
    : file_(without_links(settings.file)), part_(file_ + ".part"), mask_(current_umask()) {
  struct stat status = {};
  if (lstat(file_.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
    throw RecordingError(file_ + ": is no ordinary file to replace");
  }
  open_part();
  const std::string head = head_text(settings);
  try {
    write_at(0, head);
    size_ = head.size();
    append("", 1);
  } catch (...) {
    unlink(part_.c_str());
    close(descriptor_);
    throw;
  }
}

RecordingFile::~RecordingFile() {
  close(descriptor_);
}

void RecordingFile::abandon() {
  close(descriptor_);
  descriptor_ = -1;
}

void RecordingFile::write_at(std::uint64_t offset, const std::string& text) {
  std::size_t done = 0;
  while (done < text.size()) {
    const ssize_t written = pwrite(descriptor_, text.data() + done, text.size() - done,
                                   static_cast<off_t>(offset + done));
    if (written > 0) {
      done += static_cast<std::size_t>(written);
    } else if (written == 0 || errno != EINTR) {
      fail("cannot be written");
    }
  }
}

void RecordingFile::append(const std::string& moments, std::uint64_t length_ms) {
  const std::string tail = "\n], \"seconds\": " + kova_sim::seconds_text(length_ms) + "}\n}\n";
  const std::string text = (is_empty_ || moments.empty() ? "" : ",\n") + moments + tail;
  const std::uint64_t at = size_ - tail_.size();
  try {
    write_at(at, text);
  } catch (const RecordingError&) {
    // The old end takes no more room than it had.
    if (!tail_.empty() && pwrite(descriptor_, tail_.data(), tail_.size(), static_cast<off_t>(at)) ==
                              static_cast<ssize_t>(tail_.size())) {
      static_cast<void>(ftruncate(descriptor_, static_cast<off_t>(size_)) == 0);
    }
    throw;
  }
  is_empty_ = is_empty_ && moments.empty();
  size_ = at + text.size();
  tail_ = tail;
  if (ftruncate(descriptor_, static_cast<off_t>(size_)) != 0) {
    fail("cannot be written");
  }
}

void RecordingFile::write_note(const Summary& summary) {
  write_at(0, note_member(note_text(summary)));
}

void RecordingFile::sync() {
  if (!is_entered_) {
    is_entered_ = true;
    sync_folder(part_);
  }
  if (fdatasync(descriptor_) != 0 && errno != EINVAL && errno != EROFS) {
    fail("cannot be written");
  }
}

void RecordingFile::remove() {
  unlink(part_.c_str());
}

void RecordingFile::finish() {
  take_over_mode(descriptor_, file_, mask_);
  if (std::rename(part_.c_str(), file_.c_str()) != 0) {
    fail("cannot be replaced");
  }
  sync_folder(file_);
}

}  // namespace kova_recorder
