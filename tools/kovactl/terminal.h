// What the program may draw: colours, cursor moves, block characters.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace kovactl {

inline constexpr std::string_view kEraseToEndOfLine = "\x1b[K";

bool is_terminal(int descriptor);

// True for a terminal whose cursor can be moved: TERM names one, and not "dumb".
bool can_draw_on(int descriptor);

// True for a terminal that nobody shows any more. Its end is not told by a signal to who ignores
// SIGHUP, or has inherited that.
bool has_hung_up(int descriptor);

// Columns of the terminal there, 80 if it does not tell; nothing if it is none.
std::optional<size_t> terminal_columns(int descriptor);

// True if the user's locale encodes text as UTF-8. The environment is looked at, never set.
bool prefers_utf8();

enum class Style { plain, heading, faint, unreadable, alarm, changed };

// Colours text on a terminal that can draw, unless NO_COLOR is set; leaves it alone otherwise.
class Painter {
 public:
  explicit Painter(bool colour) : colour_(colour) {}
  static Painter for_stdout();

  bool paints() const { return colour_; }

  std::string operator()(Style style, std::string_view text) const;

 private:
  bool colour_;
};

}  // namespace kovactl
