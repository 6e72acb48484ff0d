// The folder and the name that a path leads to.
#include "tools/host/system/file_place.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <deque>
#include <utility>

#include "tools/host/system/atomic_file.h"
#include "tools/host/system/descriptor_output.h"

namespace kova_host {

OwnedDescriptor::~OwnedDescriptor() {
  if (descriptor_ >= 0) {
    close(descriptor_);
  }
}

OwnedDescriptor& OwnedDescriptor::operator=(OwnedDescriptor&& other) noexcept {
  std::swap(descriptor_, other.descriptor_);
  return *this;
}

int OwnedDescriptor::release() {
  return std::exchange(descriptor_, -1);
}

namespace {

namespace fs = std::filesystem;

class Walk {
 public:
  explicit Walk(const fs::path& file) : file_(file), way_(file.begin(), file.end()) {
    enter_root();
  }

  FilePlace to_its_end() {
    while (true) {
      const std::string name = next_name();
      if (!follow_link(name)) {
        if (way_.empty()) {
          return {std::move(folder_), name};
        }
        enter(name.c_str(), 0);
      }
    }
  }

 private:
  [[noreturn]] void fail(int error) const {
    throw OutputError(error, std::generic_category(), "cannot write " + file_.native());
  }

  // "a//b" and "a/./b" are "a/b".
  std::string next_name() {
    while (!way_.empty() && (way_.front().empty() || way_.front() == ".")) {
      way_.pop_front();
    }
    if (way_.empty()) {
      fail(EISDIR);
    }
    std::string name = way_.front().native();
    way_.pop_front();
    return name;
  }

  void enter(const char* name, int at_root) {
    const int descriptor = openat(at_root != 0 ? at_root : folder_.get(), name,
                                  O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (descriptor < 0) {
      fail(errno);
    }
    folder_ = OwnedDescriptor(descriptor);
  }

  // A path that begins with "/" begins anew, also that of a link.
  void enter_root() {
    const bool absolute = !way_.empty() && way_.front() == "/";
    if (absolute) {
      way_.pop_front();
    }
    if (absolute || folder_.get() < 0) {
      enter(absolute ? "/" : ".", AT_FDCWD);
    }
  }

  bool follow_link(const std::string& name) {
    struct stat entry = {};
    if (fstatat(folder_.get(), name.c_str(), &entry, AT_SYMLINK_NOFOLLOW) != 0) {
      if (errno == ENOENT && way_.empty()) {
        return false;
      }
      fail(errno);
    }
    if (!S_ISLNK(entry.st_mode)) {
      return false;
    }
    struct stat folder = {};
    if (fstat(folder_.get(), &folder) != 0) {
      fail(errno);
    }
    if (is_strangers(folder, entry.st_uid, geteuid())) {
      throw OutputError(EACCES, std::generic_category(),
                        "cannot write " + file_.native() + ": " + name +
                            " is another user's link in a folder that everybody may write to");
    }
    constexpr int kMostLinks = 40;  // as the kernel
    if (++links_ > kMostLinks) {
      fail(ELOOP);
    }
    prepend_target(name);
    return true;
  }

  void prepend_target(const std::string& name) {
    std::array<char, PATH_MAX> target{};
    const ssize_t length = readlinkat(folder_.get(), name.c_str(), target.data(), target.size());
    if (length < 0) {
      fail(errno);
    }
    const fs::path path(std::string(target.data(), static_cast<size_t>(length)));
    way_.insert(way_.begin(), path.begin(), path.end());
    enter_root();
  }

  const fs::path& file_;
  std::deque<fs::path> way_;  // not walked yet
  OwnedDescriptor folder_;
  int links_ = 0;
};

}  // namespace

FilePlace find_place(const fs::path& file) {
  return Walk(file).to_its_end();
}

}  // namespace kova_host
