// The terminal data base, in a file of its own: its header makes macros of common words.
#include "tools/kovactl/terminal_type.h"

#include <unistd.h>

// In this order, and last.
#include <curses.h>
#include <term.h>

namespace kovactl {

bool is_known_terminal_type() {
  int error = 0;
  if (setupterm(nullptr, STDOUT_FILENO, &error) != OK) {
    return false;
  }
  del_curterm(cur_term);
  return true;
}

}  // namespace kovactl
