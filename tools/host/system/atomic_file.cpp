// Replacing a file so that a reader sees the old text or the new one, never a part: a new file in
// the same folder is written to the disk and then renamed over the old one.
#include "tools/host/system/atomic_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "tools/host/system/descriptor_output.h"
#include "tools/host/system/interrupts.h"

namespace kova_host {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void fail(const fs::path& file) {
  throw OutputError(errno, std::generic_category(), "cannot write " + file.native());
}

// A file that is gone again when it is left unfinished.
class NewFile {
 public:
  NewFile(const fs::path& file) : target_(file) {
    // Collectors pick files up by their suffix: this one has none that they know.
    name_ = (file.parent_path() / ("." + file.filename().native() + ".XXXXXX")).native();
    descriptor_ = mkostemp(name_.data(), O_CLOEXEC);
    if (descriptor_ < 0) {
      fail(file);
    }
  }
  ~NewFile() {
    if (descriptor_ >= 0) {
      close(descriptor_);
    }
    if (!name_.empty()) {
      unlink(name_.c_str());
    }
  }
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  void write_and_rename(std::string_view text) {
    constexpr mode_t kReadableByAll = 0644;
    write_all(descriptor_, text, target_.native());
    if (fchmod(descriptor_, kReadableByAll) != 0 || fsync(descriptor_) != 0) {
      fail(target_);
    }
    const int descriptor = descriptor_;
    descriptor_ = -1;
    if (close(descriptor) != 0 || rename(name_.c_str(), target_.c_str()) != 0) {
      fail(target_);
    }
    name_.clear();
  }

 private:
  fs::path target_;
  std::string name_;
  int descriptor_ = -1;
};

// So that the rename itself outlasts a power cut. Some file systems cannot sync a folder.
void sync_folder(const fs::path& folder) {
  const int descriptor = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor >= 0) {
    (void)fsync(descriptor);
    close(descriptor);
  }
}

}  // namespace

void replace_file(const fs::path& file, std::string_view text) {
  std::error_code error;
  const fs::path target = fs::weakly_canonical(fs::absolute(file), error);
  if (error) {
    throw OutputError(error, "cannot write " + file.native());
  }
  // A device or pipe of that name must not be replaced by a plain file.
  if (fs::exists(target, error) && !fs::is_regular_file(target, error)) {
    throw OutputError(EINVAL, std::generic_category(),
                      "cannot write " + file.native() + ", which is no plain file");
  }
  const InterruptGuard no_interrupt_leaves_the_new_file_behind;
  NewFile(target).write_and_rename(text);
  sync_folder(target.parent_path());
}

}  // namespace kova_host
