// What the program may draw: colours, cursor moves, block characters.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kovactl {

inline constexpr std::string_view kEraseToEndOfLine = "\x1b[K";

bool is_terminal(int descriptor);

// Rows of the terminal on stdout; 24 if it does not tell.
size_t terminal_rows();

// True if the user's locale encodes text as UTF-8. The environment is looked at, never set.
bool prefers_utf8();

enum class Style { plain, heading, faint, unreadable, alarm, changed };

// Colours text on a terminal, unless NO_COLOR is set; leaves it alone otherwise.
class Painter {
 public:
  explicit Painter(bool colour) : colour_(colour) {}
  static Painter for_stdout();

  std::string operator()(Style style, std::string_view text) const;

 private:
  bool colour_;
};

}  // namespace kovactl
