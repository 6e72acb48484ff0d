// Files that somebody names, to be read as a whole.
#pragma once

#include <cstddef>
#include <string>

namespace kova_host {

inline constexpr size_t kMostBytesRead = size_t{64} << 20U;

// The text of `file`, or of the file that symbolic links lead to. A regular file of at most
// `at_most` bytes: a pipe may be waited for for ever, a device may act when it is opened, and what
// /proc and /sys say is no file that anybody has written; none of these is opened.
// Throws HostError (usage), "cannot read 'FILE': ...".
std::string read_regular_file(const std::string& file, size_t at_most = kMostBytesRead);

// What stands for stdin or stdout in a file's place; a file of that name is "./-".
inline constexpr const char* kStandardStream = "-";

// The same, or for "-" what stdin has until its end: waited for, and once, as nothing is left after
// that. Throws HostError (usage) for a second time too.
std::string read_file_or_stdin(const std::string& file, size_t at_most = kMostBytesRead);

}  // namespace kova_host
