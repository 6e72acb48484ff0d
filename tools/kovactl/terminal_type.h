// Whether ncurses knows the terminal on stdout.
#pragma once

namespace kovactl {

// By the variable TERM and the terminal data base.
bool is_known_terminal_type();

}  // namespace kovactl
