// What the program may draw: colours, cursor moves, block characters.
#include "terminal.h"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "text_value.h"

namespace kovactl {
namespace {

std::string_view variable(const char* name) {
  const char* value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): nothing sets it later
  return value == nullptr ? std::string_view() : value;
}

std::string_view escape_of(Style style) {
  switch (style) {
    case Style::heading:
      return "\x1b[1m";
    case Style::faint:
      return "\x1b[2m";
    case Style::unreadable:
      return "\x1b[33m";
    case Style::alarm:
      return "\x1b[1;31m";
    case Style::changed:
      return "\x1b[7m";
    case Style::plain:
      return "";
  }
  return "";
}

}  // namespace

bool is_terminal(int descriptor) {
  return isatty(descriptor) == 1;
}

size_t terminal_rows() {
  winsize size{};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_row == 0) {
    return 24;
  }
  return size.ws_row;
}

bool prefers_utf8() {
  for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
    const std::string_view value = variable(name);
    if (value.empty()) {
      continue;
    }
    const std::string_view encoding = value.substr(std::min(value.find('.'), value.size() - 1) + 1);
    return same_word(encoding.substr(0, 5), "UTF-8") || same_word(encoding.substr(0, 4), "UTF8");
  }
  return false;
}

Painter Painter::for_stdout() {
  return Painter(is_terminal(STDOUT_FILENO) && variable("NO_COLOR").empty() &&
                 variable("TERM") != "dumb");
}

std::string Painter::operator()(Style style, std::string_view text) const {
  if (!colour_ || style == Style::plain) {
    return std::string(text);
  }
  return fmt::format("{}{}\x1b[0m", escape_of(style), text);
}

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

}  // namespace kovactl
