// What a description says about device codes: keys such as "0x690000..0x69000A", and entries.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "simulator/json_node.h"
#include "simulator/machine.h"

namespace kova_sim {

/// "0x690000" or "0x690000..0x69000A"; refused with `node`'s place otherwise.
CodeRun parse_run(const std::string& text, const Node& node);

/// What an entry says, for a run of codes or for one. What it does not mention is not there.
struct Entry {
  /// Characters, four to a code, and what fills the rest of the run.
  struct Text {
    std::string text;
    char pad = ' ';
  };

  std::optional<ValueSource> value;
  std::optional<Text> text;
  std::optional<std::optional<WriteRule>> write;  // of the run's first code
  std::optional<std::optional<Failure>> fail_read;
  std::optional<std::optional<Failure>> fail_write;
  std::optional<std::uint32_t> delay_us;

  /// Changes `item`, which stands at this place of the run, as the entry says. Codes that the
  /// entry names, and the characters of its text, move on with the place.
  void apply(DescribedCode& item, std::uint32_t index) const;

  /// What an item keeps outside itself, in bytes, but for the trace that all share.
  std::size_t memory() const;
};

/// Read once for all codes of the run, however many they are.
Entry read_entry(const Node& node, const CodeRun& run);

/// Moves the codes that `rule` refers to; `move` changes a code.
template <typename Move>
void move_codes(WriteRule& rule, Move move) {
  for (std::uint32_t& code : rule.changes) {
    move(code);
  }
  for (auto* limit : {&rule.min, &rule.max}) {
    if (*limit && std::holds_alternative<CodeReference>(**limit)) {
      move(std::get<CodeReference>(**limit).code);
    }
  }
}

/// A failure rule; null clears it.
std::optional<Failure> read_failure(const Node& node, bool may_store);
std::uint32_t read_delay_us(const Node& node);

}  // namespace kova_sim
