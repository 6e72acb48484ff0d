// Walks through a recording.
#include "tools/host/record/replay_walk.h"

#include <algorithm>
#include <iterator>
#include <numeric>
#include <set>
#include <utility>

#include "tools/host/model/item_data.h"
#include "tools/host/model/selection.h"

namespace kova_host {
namespace {

using std::chrono::milliseconds;

// The recorded moments, and the steps between them without a code.
std::vector<Replay::Moment> stops_of(const Replay& replay, milliseconds step) {
  const std::vector<Replay::Moment> moments = replay.moments();
  std::vector<Replay::Moment> stops;
  auto moment = moments.begin();
  for (milliseconds time{0}; time < replay.length(); time += step) {
    for (; moment != moments.end() && moment->time <= time; ++moment) {
      stops.push_back(*moment);
    }
    if (stops.empty() || stops.back().time < time) {
      stops.push_back({time, {}});
    }
  }
  stops.insert(stops.end(), moment, moments.end());
  return stops;
}

// Which items may read otherwise once a code does: by the codes that they ask, and by their
// family's presence. An item of which no code is known may do so with any: it gets code 0.
std::multimap<uint32_t, size_t> by_code(const std::vector<Item>& items) {
  std::multimap<uint32_t, size_t> result;
  for (size_t i = 0; i < items.size(); ++i) {
    std::set<uint32_t> codes(items[i].facts.codes.begin(), items[i].facts.codes.end());
    const FamilyData* family = family_of(items[i].id);
    if (family != nullptr && !codes.empty()) {
      codes.insert(family->presence_code);
    } else {
      codes = {0};
    }
    for (const uint32_t code : codes) {
      result.emplace(code, i);
    }
  }
  return result;
}

}  // namespace

ReplayWalk::ReplayWalk(const Replay& replay, const Session& session, const std::vector<Item>& items,
                       milliseconds step)
    : replay_(replay),
      session_(session),
      items_(distinct(items)),
      items_of_code_(by_code(items_)),
      stops_(stops_of(replay, step)) {}

std::vector<size_t> ReplayWalk::items_at(const Replay::Moment& stop) const {
  std::vector<size_t> result;
  if (at_ == 0 || (!replay_.is_pure() && stop.codes.empty())) {
    result.resize(items_.size());
    std::iota(result.begin(), result.end(), 0);
    return result;
  }
  const auto add = [&](uint32_t code) {
    const auto [first, last] = items_of_code_.equal_range(code);
    std::transform(first, last, std::back_inserter(result),
                   [](const auto& entry) { return entry.second; });
  };
  add(0);
  std::for_each(stop.codes.begin(), stop.codes.end(), add);
  // In their order, as the sweep that was recorded has read them.
  std::sort(result.begin(), result.end());
  result.erase(std::unique(result.begin(), result.end()), result.end());
  return result;
}

bool ReplayWalk::next() {
  if (at_ == stops_.size()) {
    return false;
  }
  const Replay::Moment& stop = stops_[at_];
  replay_.set_time(stop.time);
  fresh_.clear();
  std::vector<Item> asked;
  for (const size_t i : items_at(stop)) {
    asked.push_back(items_[i]);
    fresh_.push_back(items_[i].id);
  }
  for (auto& [id, reading] : read_items(session_, asked)) {
    readings_[id] = std::move(reading);
  }
  ++at_;
  return true;
}

}  // namespace kova_host
