// The commands. Each prints its result and returns the exit code; what ends it early is thrown.
#pragma once

#include "command_line.h"
#include "errors.h"
#include "reading.h"

namespace kovactl {

ExitCode run_list(const Request& request);
ExitCode run_capability(const Request& request);
ExitCode run_get(const Request& request);
ExitCode run_set(const Request& request);
ExitCode run_watch(const Request& request);
ExitCode run_metrics(const Request& request);
ExitCode run_senml(const Request& request);

// The exit code after these readings; tells on stderr how many of them failed.
ExitCode verdict(const Readings& readings);

}  // namespace kovactl
