// Readings as they were told before: what `kovactl list --json` prints, read back.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/host/values/reading.h"

namespace kova_host {

struct ListedItem {
  Item item;
  Reading reading;
};

// In the order of the document. `name` stands for the text in messages. Throws HostError (usage)
// for a text that is no such document.
std::vector<ListedItem> parse_list_document(std::string_view text, const std::string& name);

// The same of a file, or of stdin for "-". Throws HostError (usage) too if the file cannot be read.
std::vector<ListedItem> read_list_document(const std::string& file);

// The items of a machine, and those of `expected` whose ID none of them has, marked as missing.
std::vector<Item> with_missing(std::vector<Item> items, const std::vector<ListedItem>& expected);

}  // namespace kova_host
