// Writing to file descriptors, with every failure noticed.
#include "output.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace kovactl {

void write_all(int descriptor, std::string_view text, const std::string& name) {
  while (!text.empty()) {
    const ssize_t written = write(descriptor, text.data(), text.size());
    if (written < 0 && errno == EINTR) {
      continue;
    }
    if (written < 0) {
      throw OutputError(errno, std::generic_category(), "cannot write " + name);
    }
    text.remove_prefix(static_cast<size_t>(written));
  }
}

void print(std::string_view text) {
  write_all(STDOUT_FILENO, text, "the output");
}

void write_if_possible(int descriptor, std::string_view text) {
  try {
    write_all(descriptor, text, "");
  } catch (const OutputError&) {
    // Nothing is left to tell it to.
  }
}

void report(std::string_view message) {
  std::string line(message);
  std::replace(line.begin(), line.end(), '\n', ' ');
  write_if_possible(STDERR_FILENO, fmt::format("kovactl: {}\n", line));
}

}  // namespace kovactl
