// What commands have in common: the start, reading with progress, the exit code at the end.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tools/host/catalogue.h"
#include "tools/host/reading.h"
#include "tools/kovactl/command_line.h"

namespace kovactl {

// Starts the module; shows progress on a terminal.
std::unique_ptr<Session> open_session(const GlobalOptions& globals);

// As kova_host::read_items, with progress on a terminal.
Readings read_with_progress(const Session& session, const std::vector<Item>& items);

// The exit code after these readings; tells on stderr how many of them failed.
ExitCode verdict(const Readings& readings);

// "0x14140B01 PoE 1 power"
std::string title(const Item& item);

// Throws HostError (usage) for a text that is no item ID.
uint32_t checked_id(const std::string& text);

}  // namespace kovactl
