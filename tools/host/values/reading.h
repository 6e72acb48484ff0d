// Fresh values of items, and what became of an attempt to read one.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tools/host/model/item.h"
#include "tools/host/session/session.h"

namespace kova_host {

struct Reading {
  enum class State {
    good,    // `value` holds what the device answered
    absent,  // the item has no value at present, such as the time to empty of an idle battery
    failed,  // `status` tells why
  };
  State state = State::failed;
  uint32_t status = 0;  // as the module returned it; 0 for a good reading
  ItemValue value;
  // Of a text that failed because some of its words did: what the module made of the others.
  std::string in_part = {};
  // Absent, as the recording that is replayed has a blank in the value's place.
  bool redacted = false;
  std::string reason = {};  // of a failure that is not the module's: "the device library crashed"

  // The value of a numeric item.
  std::optional<double> number() const;
};

using Readings = std::map<uint32_t, Reading>;

// The module publishes a text of several words although some of them cannot be read, with others in
// their place. Where the device library can be asked for the words, such a text fails with the
// status of the first that does. Texts that can change by themselves fail as a whole.
Reading read_item(const Session& session, const Item& item);

// Reads each ID once, all in one call; an item that fails does not stop the others.
Readings read_items(const Session& session, const std::vector<Item>& items);

bool any_failed(const Readings& readings);

// True for a number beyond an end of the item's published range.
bool out_of_range(const Item& item, const Reading& reading);

}  // namespace kova_host
