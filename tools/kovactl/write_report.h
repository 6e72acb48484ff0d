// What `kovactl set` and `kovactl reset` tell of their writes.
#pragma once

#include <vector>

#include "tools/host/values/item_write.h"
#include "tools/kovactl/command_line.h"

namespace kovactl {

struct WriteOptions {
  bool dry_run = false;
  bool json = false;
};

void add_write_options(CLI::App& command, WriteOptions& options);

// Does the writes one after the other, tells each outcome, and gives the exit code.
ExitCode write_and_report(const GlobalOptions& globals, const kova_host::Session& session,
                          const std::vector<kova_host::PlannedWrite>& plans,
                          const WriteOptions& options);

}  // namespace kovactl
