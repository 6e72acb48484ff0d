// The bodies of /api/v1: snapshots and history as JSON text.
#pragma once

#include <string>
#include <vector>

#include "tools/page/recent_samples.h"
#include "tools/page/snapshot.h"

namespace kova_page {

// The machine that the exporter speaks of.
struct Machine {
  std::string name;       // its host name
  std::string simulated;  // the simulated machine's name; "" for a real one
};

// The part of a document that stays the same as long as the snapshot does.
struct ItemsText {
  std::string json;  // the array, and behind it "findings" on these items, without a brace
  bool all_read = true;
};
ItemsText items_text(const Snapshot& snapshot, const std::vector<kova_host::Item>& items);

// {"ok", "machine", "release", "sweep", "units", "items", "findings"}, and what of it stands before
// the items' text: "}" comes after that.
std::string items_head(const Machine& machine, bool all_read, const SweepState& state);
std::string items_document(const Machine& machine, const ItemsText& items, const SweepState& state);

// {"ok", "sweep", "times", "series"}: a head that changes with time, and all that follows it.
std::string history_head(const SweepState& state);
std::string history_text(const RecentSamples::Extract& extract);
std::string history_document(const RecentSamples::Extract& extract, const SweepState& state);

// A server-sent event with every value of the sweep, in the order of the item list.
std::string sweep_event(const Snapshot& snapshot, const SweepState& state);

// A server-sent event that tells how the sweep stands, without values.
std::string status_event(const SweepState& state);

}  // namespace kova_page
