// The wildcards * and ?.
#include "tools/host/model/name_pattern.h"

namespace kova_host {
namespace {

// The case of ASCII letters does not count.
bool is_same_letter(char a, char b) {
  const auto folded = [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  };
  return folded(a) == folded(b);
}

bool is_continuation(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

// Bytes of the character that `text`, which is not empty, begins with.
size_t character_size(std::string_view text) {
  size_t size = 1;
  while (size < text.size() && is_continuation(text[size])) {
    size += 1;
  }
  return size;
}

}  // namespace

// The newest star takes as little as it can, one byte more after each failure. What an earlier star
// took need not be tried again: had it taken more, the newest one could only begin later.
bool matches_pattern(std::string_view pattern, std::string_view text) {
  bool has_star = false;
  std::string_view after_star;   // of the pattern
  std::string_view after_taken;  // by the star, of the text
  while (!text.empty() || !pattern.empty()) {
    if (pattern.starts_with('*')) {
      pattern.remove_prefix(1);
      has_star = true;
      after_star = pattern;
      after_taken = text;
    } else if (!text.empty() && pattern.starts_with('?')) {
      pattern.remove_prefix(1);
      text.remove_prefix(character_size(text));
    } else if (!text.empty() && !pattern.empty() && is_same_letter(pattern.front(), text.front())) {
      pattern.remove_prefix(1);
      text.remove_prefix(1);
    } else if (has_star && !after_taken.empty()) {
      after_taken.remove_prefix(1);
      text = after_taken;
      pattern = after_star;
    } else {
      return false;
    }
  }
  return true;
}

}  // namespace kova_host
