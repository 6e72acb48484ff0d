// What commands have in common: the start, reading with progress, the exit code at the end.
#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "tools/host/inventory.h"
#include "tools/host/reading.h"
#include "tools/host/selection.h"
#include "tools/kovactl/attendant.h"
#include "tools/kovactl/command_line.h"

namespace kovactl {

// Waits for that time, or until a signal asks the command to end; true if one has.
bool wait_until(Attendant& attendant, std::chrono::steady_clock::time_point time);

// Starts the module; shows progress on a terminal.
std::unique_ptr<Session> open_session(const GlobalOptions& globals);

// As kova_host::read_items, with progress on a terminal.
Readings read_with_progress(const Session& session, const std::vector<Item>& items);

// Tells on stderr of each item that could not be read, and why.
void report_failures(const std::vector<Item>& items, const Readings& readings);

// The exit code after these readings of `items`; tells on stderr which of them failed.
ExitCode verdict(const std::vector<Item>& items, const Readings& readings);

// "0x14140B01 PoE 1 power"; with the path where the name alone leaves a doubt.
std::string title(const Item& item);

// Adds what picks items: [ITEM...] and --family.
void add_selection(CLI::App& command, Selection& selection);

}  // namespace kovactl
