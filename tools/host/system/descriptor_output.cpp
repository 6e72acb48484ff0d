// Writing to file descriptors, with every failure noticed.
#include "tools/host/system/descriptor_output.h"

#include <unistd.h>

#include <cerrno>

namespace kova_host {

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

}  // namespace kova_host
