// What a description says about device codes: keys such as "0x690000..0x69000A", and entries.
#pragma once

#include <cstdint>
#include <optional>

#include "simulator/json_node.h"
#include "simulator/machine.h"

namespace kova_sim {

/// "0x690000" or "0x690000..0x69000A"; refused with `node`'s place otherwise.
CodeRun parse_run(const std::string& text, const Node& node);

/// Where in a run of `count` codes an entry is applied.
struct Place {
  std::uint32_t code = 0;
  std::uint32_t index = 0;
  std::uint64_t count = 1;
};

/// Changes `item` as the entry says; what the entry does not mention stays. Codes that the entry
/// names, and the characters of its text, move on with the place.
void apply_entry(Item& item, const Node& entry, const Place& place);

/// A failure rule; null clears it.
std::optional<Failure> read_failure(const Node& node, bool may_store);
std::uint32_t read_delay_us(const Node& node);

}  // namespace kova_sim
