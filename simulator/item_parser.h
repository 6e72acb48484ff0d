// What a description says about device codes: keys such as "0x690000..0x69000A", and entries.
#pragma once

#include <cstdint>
#include <optional>

#include "simulator/json_node.h"
#include "simulator/machine.h"

namespace kova_sim {

/// Codes from first to last, both included.
struct CodeRun {
  std::uint32_t first = 0;
  std::uint32_t last = 0;

  std::uint64_t size() const { return std::uint64_t{last} - first + 1; }
  bool contains(std::uint32_t code) const { return first <= code && code <= last; }
};

/// No machine needs more; a slip of the pen must not eat the memory.
inline constexpr std::uint64_t MAX_RUN = 4096;
inline constexpr std::uint64_t MAX_CODES = 65536;

/// "0x690000" or "0x690000..0x69000A"; refused with `node`'s file and key otherwise.
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
