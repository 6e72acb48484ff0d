// What a device code has answered over time, as it was recorded: words and failures at moments.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace kova_sim {

/// One answer: a word, or a failure, which may have stored a word nevertheless.
struct Answer {
  std::uint32_t status = 0;
  std::optional<std::uint32_t> word;
  /// The call at its moment, 1 for the first, from which on the answer holds.
  std::uint32_t from_call = 1;
};

/// Where a machine stands in a trace: the moment that it is at, and how many calls it has made
/// there.
struct TracePosition {
  std::uint64_t moment = UINT64_MAX;
  std::uint32_t calls = 0;
};

/// Moments in order of time, each with at least one answer. An answer holds until the next; calls
/// at one moment take its answers in turn, so that a code that is asked several times in a sweep
/// answers as it did. Before the first moment its first answer holds.
class Trace {
 public:
  /// Adds an answer at `ms`; false if that lies before the last moment, or `from_call` is not
  /// after the last answer of the same moment.
  bool add(std::uint64_t ms, const Answer& answer);

  /// The trace begins again every `ms`; 0: the last answer holds.
  void repeat_every(std::uint64_t ms) { period_ms_ = ms; }

  bool empty() const { return moments_.empty(); }
  std::uint64_t last_ms() const { return moments_.back().ms; }

  template <typename Visit>
  void visit_moments(Visit visit) const {
    for (const Moment& moment : moments_) {
      visit(moment.ms);
    }
  }
  /// The call that follows the answers added so far, were it made at `ms`.
  std::uint32_t next_call(std::uint64_t ms) const;

  /// The answer to a call at `ms`, which moves `position`. The trace must not be empty.
  const Answer& take(std::uint64_t ms, TracePosition& position) const;

  /// The last answer at `ms`, which a look without a call gets.
  const Answer& look(std::uint64_t ms) const;

 private:
  struct Moment {
    std::uint64_t ms = 0;
    std::size_t begin = 0;  // of its answers
  };

  std::size_t moment_at(std::uint64_t ms) const;
  std::size_t end_of(std::size_t moment) const;

  std::vector<Moment> moments_;
  std::vector<Answer> answers_;
  std::uint64_t period_ms_ = 0;
};

/// Shared, since runs and copies of codes have the same one.
using SharedTrace = std::shared_ptr<Trace>;

}  // namespace kova_sim
