// Writing to file descriptors, with every failure noticed.
#pragma once

#include <string>
#include <string_view>
#include <system_error>

namespace kova_host {

// A write that failed; code() holds errno.
class OutputError : public std::system_error {
 public:
  using std::system_error::system_error;
};

// Writes all of `text`; throws OutputError, which calls the file `name`.
void write_all(int descriptor, std::string_view text, const std::string& name);

}  // namespace kova_host
