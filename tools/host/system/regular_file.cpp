// Reading files that are files.
#include "tools/host/system/regular_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <system_error>

#include "tools/host/system/errors.h"
#include "tools/host/system/file_place.h"

namespace kova_host {
namespace {

[[noreturn]] void refuse_file(const std::string& file, const std::string& reason) {
  throw HostError(Fault::usage, fmt::format("cannot read '{}': {}", file, reason));
}

[[noreturn]] void refuse_by_errno(const std::string& file) {
  refuse_file(file, std::generic_category().message(errno));
}

// Two looks: one that opens nothing, and one at what was opened in the end.
void require_regular(const std::string& file, const struct stat& status) {
  if (S_ISDIR(status.st_mode)) {
    refuse_file(file, std::generic_category().message(EISDIR));
  }
  if (!S_ISREG(status.st_mode)) {
    refuse_file(file, "it is no regular file");
  }
}

bool is_made_by_kernel(const struct statfs& system) {
  return system.f_type == PROC_SUPER_MAGIC || system.f_type == SYSFS_MAGIC;
}

OwnedDescriptor open_regular(const std::string& file) {
  struct stat status {};
  struct statfs system {};
  if (stat(file.c_str(), &status) != 0) {
    refuse_by_errno(file);
  }
  require_regular(file, status);
  OwnedDescriptor descriptor(open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  if (descriptor.get() < 0 || fstat(descriptor.get(), &status) != 0 ||
      fstatfs(descriptor.get(), &system) != 0) {
    refuse_by_errno(file);
  }
  require_regular(file, status);
  if (is_made_by_kernel(system)) {
    refuse_file(file, "it is no regular file");
  }
  return descriptor;
}

// From an open descriptor; `file` is for messages.
std::string read_to_end(int descriptor, const std::string& file, size_t at_most) {
  std::string text;
  std::array<char, 65536> block;
  for (;;) {
    const ssize_t size = read(descriptor, block.data(), block.size());
    if (size == 0) {
      return text;
    }
    if (size > 0) {
      text.append(block.data(), static_cast<size_t>(size));
    } else if (errno != EINTR) {
      refuse_by_errno(file);
    }
    if (text.size() > at_most) {
      refuse_file(file, fmt::format("it has more than {} bytes", at_most));
    }
  }
}

}  // namespace

std::string read_regular_file(const std::string& file, size_t at_most) {
  const OwnedDescriptor descriptor = open_regular(file);
  return read_to_end(descriptor.get(), file, at_most);
}

std::string read_file_or_stdin(const std::string& file, size_t at_most) {
  static std::atomic<bool> is_read{false};
  if (file != kStandardStream) {
    return read_regular_file(file, at_most);
  }
  if (is_read.exchange(true)) {
    refuse_file(file, "stdin can be read once only");
  }
  return read_to_end(STDIN_FILENO, file, at_most);
}

}  // namespace kova_host
