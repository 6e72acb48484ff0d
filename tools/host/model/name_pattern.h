// Patterns for the names and paths of items.
#pragma once

#include <cstddef>
#include <string_view>

namespace kova_host {

// Bytes of what names items: nearly twice the longest path there is. A client may send what it
// likes, and what is longer is refused before it costs anything.
constexpr size_t kLongestItemText = 128;

// True if `pattern` stands for the whole of `text`: "*" for any characters or none, "?" for one of
// UTF-8, all else for itself, ASCII letters in either case. Takes at most one step for each pair of
// a byte of the pattern and one of the text, however many stars there are.
bool matches_pattern(std::string_view pattern, std::string_view text);

}  // namespace kova_host
