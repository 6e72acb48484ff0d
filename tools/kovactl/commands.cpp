// All commands. Each is one file, command_NAME.cpp, which owns its options, its help and its
// output; a new one is that file, and its name twice here.
#include "tools/kovactl/commands.h"

namespace kovactl {

using namespace kova_host;

void add_list(CommandLine& line);
void add_capability(CommandLine& line);
void add_get(CommandLine& line);
void add_set(CommandLine& line);
void add_reset(CommandLine& line);
void add_watch(CommandLine& line);
void add_doctor(CommandLine& line);
void add_metrics(CommandLine& line);
void add_senml(CommandLine& line);
void add_check(CommandLine& line);
void add_record(CommandLine& line);
void add_diff(CommandLine& line);
void add_report(CommandLine& line);
void add_complete(CommandLine& line);

void add_commands(CommandLine& line) {
  // In the order of the help text.
  for (const auto add :
       {add_list, add_capability, add_get, add_set, add_reset, add_watch, add_doctor, add_metrics,
        add_senml, add_check, add_record, add_diff, add_report, add_complete}) {
    add(line);
  }
}

}  // namespace kovactl
