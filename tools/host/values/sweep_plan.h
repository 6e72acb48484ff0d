// Which items a sweep has to ask the device for, and when the next one begins.
#pragma once

#include <chrono>
#include <optional>
#include <set>
#include <vector>

#include "tools/host/values/reading.h"

namespace kova_host {

// Versions, serial numbers, module data and factory defaults do not change while the machine runs:
// they are asked once in a while, and keep their reading in between. All other items are asked in
// every sweep, and so is each that failed when it was asked last.
class SweepPlan {
 public:
  // Since any fixed point: a clock's epoch, the start of a recording.
  using Time = std::chrono::steady_clock::duration;

  // An ID may stand in `items` twice. Everything is due at first, and again `lasting` later.
  explicit SweepPlan(const std::vector<Item>& items, Time lasting = std::chrono::minutes(1));

  // What a sweep that begins at `now` has to ask, in the order of the items, each ID once.
  std::vector<Item> due(Time now);

  // Takes the readings of those, and gives what the sweep has to ask as well: the rest of each
  // family in which an item fails that did not before, or answers again, since another part may
  // stand there now. Empty once the sweep is whole.
  std::vector<Item> take(const Readings& readings);

  // The last reading of each ID; all of them after the first whole sweep.
  const Readings& readings() const { return readings_; }

 private:
  std::vector<Item> items_;
  const Time lasting_;
  std::optional<Time> last_full_;
  Readings readings_;
  std::set<uint32_t> asked_;  // in the sweep under way
};

// One sweep, with the readings of all items.
Readings sweep_items(const Session& session, SweepPlan& plan, SweepPlan::Time now);

// When the sweep after one that was planned for `planned` begins. Sweeps keep to the clock, but a
// bus rests for at least as long as the last sweep took: others have to use it too.
std::chrono::steady_clock::time_point next_sweep(std::chrono::steady_clock::time_point planned,
                                                 std::chrono::steady_clock::duration interval,
                                                 std::chrono::steady_clock::time_point began,
                                                 std::chrono::steady_clock::time_point ended);

}  // namespace kova_host
