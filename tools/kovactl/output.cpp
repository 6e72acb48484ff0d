// Results on stdout, messages on stderr.
#include "tools/kovactl/output.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <string>

#include "tools/host/system/descriptor_output.h"
#include "tools/host/system/plain_text.h"

namespace kovactl {

using namespace kova_host;

using kova_host::OutputError;
using kova_host::write_all;

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
  write_if_possible(STDERR_FILENO, fmt::format("kovactl: {}\n", printable(line)));
}

}  // namespace kovactl
