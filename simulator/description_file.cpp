// Reads the file of a description, which may be anything that has a name.
#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "simulator/description.h"
#include "simulator/json_node.h"

namespace kova_sim {
namespace {

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

[[noreturn]] void fail(const std::string& path, const char* reason) {
  throw DescriptionError(path + ": cannot be read (" + reason + ")");
}

// The errno names are the same in every language.
void check(const std::string& path, bool is_done, const struct stat& status) {
  if (!is_done) {
    fail(path, strerrorname_np(errno));
  }
  if (!S_ISREG(status.st_mode)) {
    fail(path, S_ISDIR(status.st_mode) ? "EISDIR" : "no regular file");
  }
}

// Opens regular files only: a device may act when it is opened, a pipe may wait for ever, also one
// that has just come in the file's place, and so may what the kernel writes in /proc.
File open_regular(const std::string& path) {
  struct stat status = {};
  check(path, stat(path.c_str(), &status) == 0, status);
  const int descriptor = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  File file(descriptor < 0 ? nullptr : fdopen(descriptor, "rb"), std::fclose);
  check(path, file && fstat(descriptor, &status) == 0, status);
  struct statfs system = {};
  if (fstatfs(descriptor, &system) == 0 && system.f_type == PROC_SUPER_MAGIC) {
    fail(path, "no regular file");
  }
  return file;
}

}  // namespace

std::string read_file(const std::string& path) {
  const File file = open_regular(path);
  std::string text;
  char buffer[65536];
  while (const std::size_t size = std::fread(buffer, 1, sizeof buffer, file.get())) {
    text.append(buffer, size);
    if (text.size() > MAX_FILE_SIZE) {
      fail(path, "larger than 16 MiB");
    }
  }
  if (std::ferror(file.get()) != 0) {
    fail(path, strerrorname_np(errno));
  }
  text.shrink_to_fit();
  return text;
}

}  // namespace kova_sim
