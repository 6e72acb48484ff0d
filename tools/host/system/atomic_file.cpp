// Replacing a file so that a reader sees the old text or the new one, never a part: a new file in
// the same folder is written to the disk and then renamed over the old one.
#include "tools/host/system/atomic_file.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <optional>
#include <random>
#include <string>

#include "tools/host/system/descriptor_output.h"
#include "tools/host/system/file_place.h"
#include "tools/host/system/interrupts.h"

namespace kova_host {
namespace {

namespace fs = std::filesystem;

constexpr size_t kRandomCharacters = 6;

[[noreturn]] void fail(const fs::path& file, int error, const std::string& what = "") {
  throw OutputError(error, std::generic_category(), "cannot write " + file.native() + what);
}

// What the file is that stands at the place; nothing if there is none.
std::optional<struct stat> old_file(const FilePlace& place, const fs::path& file) {
  struct stat folder = {};
  struct stat old = {};
  if (fstat(place.folder.get(), &folder) != 0) {
    fail(file, errno);
  }
  if (fstatat(place.folder.get(), place.name.c_str(), &old, AT_SYMLINK_NOFOLLOW) != 0) {
    if (errno == ENOENT) {
      return std::nullopt;
    }
    fail(file, errno);
  }
  // A device or pipe of that name must not be replaced by a plain file.
  if (!S_ISREG(old.st_mode)) {
    fail(file, EINVAL, ", which is no plain file");
  }
  if (is_strangers(folder, old.st_uid, geteuid())) {
    fail(file, EACCES, ", which is another user's in a folder that everybody may write to");
  }
  return old;
}

// Collectors pick files up by their suffix: a new one has none that they know.
std::string prefix_of_new(const FilePlace& place) {
  return "." + place.name + ".";
}

std::string name_of_new(const FilePlace& place) {
  std::random_device random;
  constexpr std::string_view kCharacters = "abcdefghijklmnopqrstuvwxyz0123456789";
  std::string name = prefix_of_new(place);
  for (size_t i = 0; i < kRandomCharacters; ++i) {
    name += kCharacters[random() % kCharacters.size()];
  }
  return name;
}

// A file that is gone again when it is left unfinished. While somebody writes it, it is locked.
class NewFile {
 public:
  NewFile(const FilePlace& place, const fs::path& file, mode_t mode) : place_(place), file_(file) {
    while (!is_mine()) {
      name_ = name_of_new(place);
      const int flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
      descriptor_ = OwnedDescriptor(openat(place.folder.get(), name_.c_str(), flags, mode));
      if (descriptor_.get() < 0 && errno != EEXIST) {
        name_.clear();
        fail(file, errno);
      }
    }
  }
  ~NewFile() {
    if (!name_.empty()) {
      unlinkat(place_.folder.get(), name_.c_str(), 0);
    }
  }
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  void take_over(const struct stat& old) const {
    // Only root may give files away; whoever else replaces one owns the new one.
    if (fchown(descriptor_.get(), old.st_uid, old.st_gid) != 0 &&
        (errno != EPERM || geteuid() == 0)) {
      fail(file_, errno);
    }
    if (fchmod(descriptor_.get(), old.st_mode & (S_IRWXU | S_IRWXG | S_IRWXO)) != 0) {
      fail(file_, errno);
    }
  }

  void write(std::string_view text) const {
    write_all(descriptor_.get(), text, file_.native());
    if (fsync(descriptor_.get()) != 0) {
      fail(file_, errno);
    }
  }

  void rename_over() {
    const int folder = place_.folder.get();
    if (renameat(folder, name_.c_str(), folder, place_.name.c_str()) != 0) {
      fail(file_, errno);
    }
    name_.clear();
  }

 private:
  // Somebody who tidies up may have taken it for a leftover before it was locked.
  bool is_mine() const {
    struct stat status = {};
    return descriptor_.get() >= 0 && flock(descriptor_.get(), LOCK_EX | LOCK_NB) == 0 &&
           fstat(descriptor_.get(), &status) == 0 && status.st_nlink > 0;
  }

  const FilePlace& place_;
  const fs::path& file_;
  std::string name_;
  OwnedDescriptor descriptor_;
};

// A run that was killed has left a file that nobody has locked.
void remove_if_left(const FilePlace& place, const char* name) {
  const int folder = place.folder.get();
  const OwnedDescriptor left(
      openat(folder, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  struct stat status = {};
  if (left.get() >= 0 && fstat(left.get(), &status) == 0 && S_ISREG(status.st_mode) &&
      status.st_uid == geteuid() && flock(left.get(), LOCK_EX | LOCK_NB) == 0) {
    unlinkat(folder, name, 0);
  }
}

void tidy_up(const FilePlace& place) {
  const int copy = openat(place.folder.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  const std::unique_ptr<DIR, int (*)(DIR*)> folder(copy < 0 ? nullptr : fdopendir(copy), closedir);
  const std::string prefix = prefix_of_new(place);
  while (const dirent* entry = folder ? readdir(folder.get()) : nullptr) {
    const std::string_view name = entry->d_name;
    if (name.size() == prefix.size() + kRandomCharacters && name.starts_with(prefix)) {
      remove_if_left(place, entry->d_name);
    }
  }
}

// So that the rename itself outlasts a power cut. Some file systems cannot sync a folder.
void sync_folder(const FilePlace& place) {
  const OwnedDescriptor folder(openat(place.folder.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder.get() >= 0) {
    (void)fsync(folder.get());
  }
}

// Until its owner is known nobody else is to read it.
constexpr mode_t kOwnersAlone = 0600;
constexpr mode_t kLessTheUmask = 0666;

}  // namespace

bool is_strangers(const struct stat& folder, uid_t owner, uid_t caller) {
  const bool shared = (folder.st_mode & S_ISVTX) != 0 && (folder.st_mode & S_IWOTH) != 0;
  return shared && owner != caller && owner != folder.st_uid;
}

void replace_file(const fs::path& file, std::string_view text) {
  const FilePlace place = find_place(file);
  const auto old = old_file(place, file);
  const InterruptGuard no_interrupt_leaves_the_new_file_behind;
  tidy_up(place);
  NewFile replacement(place, file, old ? kOwnersAlone : kLessTheUmask);
  replacement.write(text);
  if (old) {
    replacement.take_over(*old);
  }
  replacement.rename_over();
  sync_folder(place);
}

void require_replaceable(const fs::path& file) {
  const FilePlace place = find_place(file);
  old_file(place, file);
  const InterruptGuard no_interrupt_leaves_the_new_file_behind;
  const NewFile none_of_it_stays(place, file, kOwnersAlone);
}

}  // namespace kova_host
