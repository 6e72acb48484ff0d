// Items as people name them: by ID, by name, by pattern, by path.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/host/model/item.h"

namespace kova_host {

// What to pick. Without texts: everything (of the family).
struct Selection {
  // Each an ID ("0x14140B01", "336857857"), a name or a path "family/package/name", either of them
  // with the wildcards * and ?; letters in any case.
  std::vector<std::string> texts;
  std::vector<std::string> families;  // none for all; in any case
};

// Those of `items` that `text` names, every ID once, in the order of `items`. An ID that is not
// among them gives an item that bears nothing but it. Throws HostError (usage), with the nearest
// name there is, when nothing is called so, and for a text of more than kLongestItemText bytes.
std::vector<Item> named_items(const std::vector<Item>& items, const std::string& text);

// The items of one family. Throws HostError (usage), with the nearest family there is.
std::vector<Item> family_items(const std::vector<Item>& items, const std::string& family);

// What `selection` picks, in the order of its texts; an ID that two of them name stands there once.
// A name that a setting shares with its factory default, or with a reading, means the setting.
// Without texts an item that stands in two families stands there twice.
std::vector<Item> select(const std::vector<Item>& items, const Selection& selection);

// The same with every ID once.
std::vector<Item> select_distinct(const std::vector<Item>& items, const Selection& selection);

// The one item that `text` names. Throws HostError (usage), with the candidates when there are
// several.
Item select_one(const std::vector<Item>& items, const std::string& text);

// Every ID once, at its first place.
std::vector<Item> distinct(const std::vector<Item>& items);

}  // namespace kova_host
