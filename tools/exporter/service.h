// The running exporter: sampler, server, signals, and what the service manager is told.
#pragma once

#include "tools/exporter/options.h"

namespace kova_exporter {

// Serves until SIGTERM, SIGINT or SIGHUP comes. Returns the exit code; does not return if the
// device library hangs then, but ends the process. Throws std::exception if it cannot serve.
int run_service(const Options& options);

}  // namespace kova_exporter
