// A walk through a recording: every moment of it, as fast as the module can be asked.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <vector>

#include "tools/host/record/replay.h"
#include "tools/host/values/reading.h"

namespace kova_host {

// Stops at each moment at which something is answered anew, and at each `step` in between. There
// only those items are read that can have changed: of a pure recording those that ask a code of
// the moment, else all at each step too.
class ReplayWalk {
 public:
  // All three must outlive the walk; the session is of the recording. `items` may hold an ID twice.
  ReplayWalk(const Replay& replay, const Session& session, const std::vector<Item>& items,
             std::chrono::milliseconds step);

  // Stops that there are.
  size_t size() const { return stops_.size(); }

  // Goes to the next stop; false at the end.
  bool next();

  // Where the walk stands: the time since the recording began, the readings of all items, and the
  // IDs of those that were read there.
  std::chrono::milliseconds time() const { return stops_[at_ - 1].time; }
  const Readings& readings() const { return readings_; }
  const std::vector<uint32_t>& fresh() const { return fresh_; }

 private:
  std::vector<size_t> items_at(const Replay::Moment& stop) const;

  const Replay& replay_;
  const Session& session_;
  std::vector<Item> items_;
  std::multimap<uint32_t, size_t> items_of_code_;
  std::vector<Replay::Moment> stops_;
  size_t at_ = 0;  // the stop that comes next
  Readings readings_;
  std::vector<uint32_t> fresh_;
};

}  // namespace kova_host
