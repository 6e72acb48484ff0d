// What commands have in common: the start, reading with progress, the exit code at the end.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/host/judgements/rules_file.h"
#include "tools/host/model/selection.h"
#include "tools/host/session/inventory.h"
#include "tools/host/values/sweep_plan.h"
#include "tools/kovactl/command_line.h"
#include "tools/kovactl/device_use.h"

namespace kovactl {

// Waits for that time, or until a signal asks the command to end; true if one has.
bool wait_until(const DeviceUse& device, std::chrono::steady_clock::time_point time);

// "interrupted", or with the call that did not come back: "interrupted while X did not answer".
std::string interruption_text(const kova_host::CallGivenUp& call);

// Starts the module; shows progress on a terminal.
std::unique_ptr<kova_host::Session> open_session(const GlobalOptions& globals);

// As kova_host::read_items, with progress on a terminal.
kova_host::Readings read_with_progress(const kova_host::Session& session,
                                       const std::vector<kova_host::Item>& items);

// Readings, and what is to be thought of them.
struct Judged {
  kova_host::Readings readings;  // of the items alone
  std::vector<kova_host::Finding> findings;
};

// Reads `items` as read_with_progress does, and what else of `known`, all items of the machine, the
// rules on them ask.
Judged read_and_judge(const kova_host::Session& session, const std::vector<kova_host::Item>& items,
                      const std::vector<kova_host::Item>& known,
                      const kova_host::Thresholds& thresholds);

// Adds --rules FILE.
void add_rules_option(CLI::App& command, std::string& file);

// The file's, as kova_host::read_rules_file; without changes for "".
kova_host::RulesFile rules_from(const std::string& file);

// Tells on stderr of each item that could not be read, and why.
void report_failures(const std::vector<kova_host::Item>& items,
                     const kova_host::Readings& readings);

// The exit code after these readings of `items`; tells on stderr which of them failed.
ExitCode verdict(const std::vector<kova_host::Item>& items, const kova_host::Readings& readings);

// "0x14140B01 PoE/PoE 1/PoE 1 power": the same on every machine.
std::string title(const kova_host::Item& item);

// Adds what picks items: [ITEM...] and --family.
void add_selection(CLI::App& command, kova_host::Selection& selection);

}  // namespace kovactl
