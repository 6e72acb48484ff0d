// All commands.
#pragma once

#include "tools/kovactl/command_line.h"

namespace kovactl {

// Adds every command with its options to `line`.
void add_commands(CommandLine& line);

}  // namespace kovactl
