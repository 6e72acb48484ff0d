// The one line that a library in somebody else's process may have to say. Needs nothing but the
// standard library.
#pragma once

#include <string>

namespace kova_sim {

/// The text as one line that any terminal can show: control characters, marks that change the
/// direction of writing and what is no UTF-8 become question marks or blanks.
std::string one_line(std::string text);

/// Writes "LIBRARY: REASON" to stderr, where descriptor 2 is still the file that it was when this
/// library was loaded, and can take it at once: an agent may have given the number to a file of
/// its own. No signal comes of it, and errno stays.
void tell_on_stderr(const char* library, const char* reason) noexcept;

}  // namespace kova_sim
