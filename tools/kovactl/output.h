// Writing to file descriptors, with every failure noticed.
#pragma once

#include <string>
#include <string_view>
#include <system_error>

namespace kovactl {

// A write that failed; code() holds errno.
class OutputError : public std::system_error {
 public:
  using std::system_error::system_error;
};

// Writes all of `text`; throws OutputError.
void write_all(int descriptor, std::string_view text, const std::string& name);

// Writes a command's result.
void print(std::string_view text);

// For what nobody misses: progress, and messages when stderr itself is gone.
void write_if_possible(int descriptor, std::string_view text);

// One line on stderr, "kovactl: ..."; line feeds inside `message` become blanks.
void report(std::string_view message);

}  // namespace kovactl
