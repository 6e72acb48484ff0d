// Ctrl-C and its kin.
#pragma once

namespace kovactl {

// From now on the first SIGINT, SIGTERM or SIGHUP (but what the program was started to ignore) is
// kept, for who looks at it. A command that does not end within a moment then is ended by it,
// unless that was promised; a second signal ends it in any case.
void watch_signals();

// The command ends in order, however long that takes.
void promise_to_end();

// The signal that has come; 0 for none.
int signal_that_came();

// Readable once one has come.
int signal_descriptor();

// Ends the program by that signal, so that the caller sees what has ended it.
[[noreturn]] void die_of(int signal);

}  // namespace kovactl
