// Files that somebody names, to be read as a whole.
#pragma once

#include <cstddef>
#include <string>

namespace kova_host {

// The text of `file`, or of the file that symbolic links lead to. A regular file of at most
// `at_most` bytes: a pipe may be waited for for ever, a device may act when it is opened, and what
// /proc and /sys say is no file that anybody has written; none of these is opened.
// Throws HostError (usage), "cannot read 'FILE': ...".
std::string read_regular_file(const std::string& file, size_t at_most = size_t{64} << 20U);

}  // namespace kova_host
