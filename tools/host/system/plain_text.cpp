// Text that may be shown anywhere, and the columns that it takes.
#include "tools/host/system/plain_text.h"

#include <fmt/format.h>

#include <algorithm>

namespace kova_host {

std::string printable(std::string_view text) {
  std::string result;
  for (size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    // U+0080 to U+009F are control characters too, and two bytes long in UTF-8.
    const bool wide_control =
        byte == 0xC2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) < 0xA0;
    if (byte < 0x20 || byte == 0x7F) {
      result += fmt::format("\\x{:02x}", byte);
    } else if (wide_control) {
      result += fmt::format("\\x{:02x}", static_cast<unsigned char>(text[++i]));
    } else {
      result += text[i];
    }
  }
  return result;
}

std::string field_text(std::string_view text) {
  return printable(without_trailing_blanks(text));
}

size_t display_width(std::string_view text) {
  return static_cast<size_t>(std::count_if(text.begin(), text.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
  }));
}

std::string padded(std::string_view text, size_t width) {
  std::string result(text);
  const size_t used = display_width(text);
  result.append(width > used ? width - used : 0, ' ');
  return result;
}

std::string shortened(std::string_view text, size_t width) {
  if (display_width(text) <= width) {
    return std::string(text);
  }
  std::string result;
  size_t columns = 0;
  for (const char c : text) {
    columns += display_width(std::string_view(&c, 1));
    if (columns >= width) {
      break;
    }
    result += c;
  }
  return width == 0 ? result : result + '~';
}

std::string shortened_in_front(std::string_view text, size_t width) {
  const size_t columns = display_width(text);
  if (columns <= width) {
    return std::string(text);
  }
  // Beginnings of characters that go, and all that is left of the last of them.
  size_t too_many = columns + 1 - width;
  while (!text.empty() && (too_many > 0 || display_width(text.substr(0, 1)) == 0)) {
    too_many -= too_many > 0 ? display_width(text.substr(0, 1)) : 0;
    text.remove_prefix(1);
  }
  return width == 0 ? std::string() : '~' + std::string(text);
}

std::string_view without_trailing_blanks(std::string_view text) {
  return text.substr(0, text.find_last_not_of(' ') + 1);
}

}  // namespace kova_host
