// A machine's items with their readings at one time, from the machine or from a file.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tools/host/reading.h"

namespace kova_host {

struct ListedItem {
  Item item;
  Reading reading;
};

using Listing = std::vector<ListedItem>;

// Every item of the started module's machine, each ID once.
Listing list_machine(const Session& session);

// What `kovactl list --json` has printed; every ID once. Items of releases that did not print a
// role get this release's. Throws HostError (usage), naming `file`, for anything else.
Listing parse_listing(std::string_view json, const std::string& file);

// The same of a file. Throws HostError (usage) too if it cannot be read.
Listing read_listing(const std::string& file);

// Those of `expected` whose ID none of `items` has, each marked as missing.
std::vector<Item> missing_items(const std::vector<Item>& items, const Listing& expected);

// True for JSON that begins as a listing does: an object with an array "items".
bool is_listing(std::string_view json);

}  // namespace kova_host
