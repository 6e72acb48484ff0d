// What the program may draw: colours, cursor moves, block characters.
#include "tools/kovactl/terminal.h"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "tools/host/system/typed_number.h"

namespace kovactl {

using namespace kova_host;

using kova_host::same_word;
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

bool can_draw_on(int descriptor) {
  const std::string_view type = variable("TERM");
  return is_terminal(descriptor) && !type.empty() && type != "dumb";
}

std::optional<size_t> terminal_columns(int descriptor) {
  if (!is_terminal(descriptor)) {
    return std::nullopt;
  }
  winsize size{};
  const bool told = ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return told ? size.ws_col : 80;
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
  return Painter(can_draw_on(STDOUT_FILENO) && variable("NO_COLOR").empty());
}

std::string Painter::operator()(Style style, std::string_view text) const {
  if (!colour_ || style == Style::plain) {
    return std::string(text);
  }
  return fmt::format("{}{}\x1b[0m", escape_of(style), text);
}

}  // namespace kovactl
