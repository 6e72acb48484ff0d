// Results on stdout, messages on stderr.
#pragma once

#include <string_view>

namespace kovactl {

// Writes a command's result; throws OutputError.
void print(std::string_view text);

// For what nobody misses: progress, and messages when stderr itself is gone.
void write_if_possible(int descriptor, std::string_view text);

// One line on stderr, "kovactl: ..."; line feeds inside `message` become blanks.
void report(std::string_view message);

}  // namespace kovactl
