// Looks at owners. Root writes anywhere, so it has to ask who has put a file there.
#include "recorder/file_owner.h"

#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>

#include "recorder/settings.h"

namespace kova_recorder {
namespace {

std::string folder_of(const std::string& file) {
  const std::size_t slash = file.rfind('/');
  return slash == std::string::npos ? "." : file.substr(0, slash + 1);
}

// True for a file that a stranger may have put there to be found.
bool is_planted(const std::string& file, const struct stat& status) {
  struct stat folder = {};
  if (status.st_uid == geteuid() || stat(folder_of(file).c_str(), &folder) != 0) {
    return false;
  }
  constexpr mode_t SHARED = S_ISVTX | S_IWOTH;
  return (folder.st_mode & SHARED) == SHARED && status.st_uid != folder.st_uid;
}

}  // namespace

std::string without_links(const std::string& file) {
  constexpr int MAX_LINKS = 40;  // the kernel's own
  std::string name = file;
  for (int i = 0; i < MAX_LINKS; ++i) {
    struct stat status = {};
    if (lstat(name.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) {
      return name;
    }
    if (is_planted(name, status)) {
      throw RecordingError(name +
                           ": is a link of another user's, in a folder where anybody may make one");
    }
    char target[PATH_MAX];
    const ssize_t size = readlink(name.c_str(), target, sizeof target);
    if (size <= 0) {
      return name;
    }
    const std::string path(target, static_cast<std::size_t>(size));
    name = path.front() == '/' ? path : folder_of(name) + path;
  }
  throw RecordingError(file + ": cannot be written (ELOOP)");
}

bool is_request(const std::string& file) {
  struct stat status = {};
  struct stat folder = {};
  return lstat(file.c_str(), &status) == 0 &&
         (status.st_uid == geteuid() || status.st_uid == 0 ||
          (stat(folder_of(file).c_str(), &folder) == 0 && status.st_uid == folder.st_uid));
}

void take_over_mode(int descriptor, const std::string& replaced, mode_t mask) {
  constexpr mode_t PERMISSIONS = 0777;
  struct stat status = {};
  mode_t mode = 0666 & ~mask;
  if (lstat(replaced.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
      !is_planted(replaced, status)) {
    mode = status.st_mode & PERMISSIONS;
    if (fchown(descriptor, status.st_uid, status.st_gid) != 0) {
      mode &= ~static_cast<mode_t>(S_IRWXG);  // the group is another one
    }
  }
  static_cast<void>(fchmod(descriptor, mode) == 0);  // or else it stays the owner's alone
}

mode_t current_umask() {
  std::ifstream status("/proc/self/status");
  std::string key;
  while (status >> key) {
    unsigned int mask = 0;
    if (key == "Umask:" && status >> std::oct >> mask) {
      return mask;
    }
  }
  return S_IRWXG | S_IRWXO;
}

}  // namespace kova_recorder
