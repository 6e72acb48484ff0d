// What of all the calls has to be written down so that a replay can answer them all.
#pragma once

#include <cstdint>
#include <optional>
#include <unordered_map>
#include <vector>

#include "simulator/device_code.h"
#include "simulator/moment_writer.h"

namespace kova_recorder {

/// Remembers the last answer of each code. A read is written down when the answer differs from
/// the one before; and once more at the next moment, after several answers at one.
class ChangeFilter {
 public:
  explicit ChangeFilter(std::vector<kova_sim::CodeRun> redacted) : redacted_(std::move(redacted)) {}

  /// The read as it has to be written down, if it has to. `ms` must not go backwards.
  std::optional<kova_sim::RecordedCall> read(std::uint64_t ms, std::uint32_t code,
                                             kova_sim::Answer answer);

  /// Every write is written down.
  kova_sim::RecordedCall write(std::uint64_t ms, std::uint32_t code, std::uint32_t word,
                               std::uint32_t status);

  std::size_t codes() const { return codes_.size(); }

 private:
  struct Code {
    kova_sim::Answer last;
    std::uint64_t ms = UINT64_MAX;  // of the last read
    std::uint32_t calls = 0;        // reads at that moment
    std::uint32_t next_call = 1;    // the read that the next answer belongs to if nothing is said
    bool had_several = false;       // answers at that moment
    bool is_redacted = false;
  };

  Code& entry(std::uint32_t code);

  std::vector<kova_sim::CodeRun> redacted_;
  std::unordered_map<std::uint32_t, Code> codes_;
};

}  // namespace kova_recorder
