// The running exporter: sampler, server, signals, and what the service manager is told.
#pragma once

#include "tools/exporter/options.h"

namespace kova_exporter {

// Serves until SIGTERM, SIGINT or SIGHUP comes, and ends within two seconds then. Returns the exit
// code. Throws std::exception if it cannot serve.
int run_service(const Options& options);

}  // namespace kova_exporter
