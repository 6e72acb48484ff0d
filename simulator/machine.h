// The simulated machine: what a description says about it, and its state while it runs.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <variant>
#include <vector>

#include "simulator/value_source.h"

namespace kova_sim {

/// Every `every`-th call fails with `status`; a failing read may still store a word.
struct Failure {
  std::uint32_t status = 0;
  std::uint32_t every = 1;
  std::optional<std::uint32_t> stores;
};

struct CodeReference {
  std::uint32_t code = 0;
};

/// An end of the accepted range: a number, or whatever a code holds when the write comes.
using Limit = std::variant<std::int64_t, CodeReference>;

struct WriteRule {
  std::vector<std::uint32_t> changes;
  std::optional<Limit> min;
  std::optional<Limit> max;
  std::uint32_t refused = 0;
};

/// What is described for one device code. Without a value it cannot be read, without a write
/// rule it cannot be written.
struct DescribedCode {
  std::optional<ValueSource> value;
  std::optional<Failure> fail_read;
  std::optional<Failure> fail_write;
  std::optional<WriteRule> write;
  /// How writes were answered while the machine was recorded; nothing changes with them. Without
  /// a rule of its own the code answers so again.
  SharedTrace recorded_writes;
  std::uint32_t delay_us = 0;
  /// The recorded words were blanked: the value is none of the device's.
  bool is_redacted = false;
};

/// What holds for every call, whatever the code.
struct Bus {
  std::uint32_t delay_us = 0;
  std::optional<Failure> fail_read;
  std::optional<Failure> fail_write;
  std::optional<std::uint32_t> not_described;
};

struct MachineDescription {
  Bus bus;
  /// Simulated milliseconds that pass with each call; none: real time passes.
  std::optional<std::uint32_t> clock_step_ms;
  /// How long the recording lasts that this is, or builds on.
  std::optional<std::uint64_t> recorded_ms;
  std::map<std::uint32_t, DescribedCode> items;
};

class Machine {
 public:
  explicit Machine(MachineDescription description);

  /// A read and a write as the device library answers them: 0 or the status of the failure.
  std::uint32_t read(std::uint32_t code, std::uint32_t* value);
  std::uint32_t write(std::uint32_t code, std::uint32_t value);

  /// From now on calls come at this time after the start, and no delay is waited for.
  void set_time(std::uint64_t ms) { set_time_ = std::chrono::milliseconds(ms); }

  /// Whether what a read of the code gives was blanked when it was recorded.
  bool is_redacted(std::uint32_t code) const;

  /// How long the recording lasts that this is; 0 if it is none.
  std::uint64_t recorded_ms() const { return description_.recorded_ms.value_or(0); }

  /// Hands over each moment of each code's trace, the code and milliseconds.
  template <typename Visit>
  void visit_moments(Visit visit) const {
    for (const auto& [code, item] : description_.items) {
      if (const auto* trace = item.value ? std::get_if<SharedTrace>(&*item.value) : nullptr) {
        (*trace)->visit_moments([&visit, at = code](std::uint64_t ms) { visit(at, ms); });
      }
    }
  }

 private:
  struct Calls {
    std::uint64_t reads = 0;
    std::uint64_t writes = 0;
    TracePosition read_position;
    TracePosition write_position;
  };

  DescribedCode* begin_call(std::uint32_t code);
  std::uint32_t value_of(const DescribedCode& item, Calls& calls, std::uint32_t* value) const;
  std::uint32_t not_described() const;
  std::uint32_t word_of(std::uint32_t code) const;
  bool accepts(const WriteRule& rule, std::uint32_t value) const;

  MachineDescription description_;
  std::map<std::uint32_t, Calls> calls_;
  Calls all_calls_;
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  std::optional<std::chrono::milliseconds> set_time_;
  std::chrono::microseconds time_{0};  // since the start, at the current call
};

}  // namespace kova_sim
