// What needs attention in the course of time: judgements that begin, change and end.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "tools/host/judgements/judge.h"

namespace kova_host {

// A judgement that stands.
struct Standing {
  Finding now;          // as the last sweep found it
  Finding worst;        // as it was at its worst since it began
  double since = 0;     // time of the first sweep that found it
  bool counts = false;  // it has held as long as its rule asks
};

// A judgement on an item begins to count (no `from`), gets worse or better, or ends (no `to`).
struct Transition {
  double time = 0;
  std::optional<Severity> from;
  std::optional<Severity> to;
  Standing standing;  // as it stood; with `to` empty, at the last sweep that found it
};

class JudgementCourse {
 public:
  enum class Patience {
    as_told,  // a finding counts when it has held as long as its rule asks
    none,     // at once: nothing that a recording saw is passed over
  };

  explicit JudgementCourse(Thresholds thresholds = {}, Patience patience = Patience::as_told)
      : thresholds_(std::move(thresholds)), patience_(patience) {}

  // Judges the next sweep. `time` in seconds, and never less than that of the sweep before; its
  // clock is the caller's. An item that an earlier sweep had and this one has not is gone; it is
  // forgotten after an hour.
  std::vector<Transition> take(double time, const std::vector<Item>& items,
                               const Readings& readings);

  // What counts now, in the order of judge().
  std::vector<Standing> standing() const;

 private:
  using Key = std::pair<std::string, uint32_t>;  // kind and item

  struct Seen {
    Item item;
    double time = 0;
  };

  std::vector<Finding> found(double time, const std::vector<Item>& items, const Readings& readings);
  void begin_or_keep(double time, const Finding& finding, std::vector<Transition>& transitions);

  Thresholds thresholds_;
  Patience patience_;
  std::map<uint32_t, Seen> seen_;
  std::vector<Key> order_;  // of the last sweep's findings
  std::map<Key, Standing> standing_;
};

}  // namespace kova_host
