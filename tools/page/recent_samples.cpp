// The numbers of the last half hour.
#include "tools/page/recent_samples.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace kova_page {
namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

// Writes to a slot of a ring that still grows until it is full.
void put_at(std::vector<double>& ring, size_t slot, double value) {
  if (slot < ring.size()) {
    ring[slot] = value;
  } else {
    ring.resize(slot, kNone);
    ring.push_back(value);
  }
}

}  // namespace

void RecentSamples::add(double time, const Row& row) {
  // A twentieth of slack: sweeps do not come to the millisecond.
  if (added_ > 0 && time >= times_[slot(added_ - 1)] &&
      time < times_[slot(added_ - 1)] + spacing_ * 0.95) {
    return;
  }
  const uint64_t sample = added_++;
  put_at(times_, slot(sample), time);
  for (const auto& [id, value] : row) {
    columns_.try_emplace(id).first->second.last_number = sample;
  }
  for (auto column = columns_.begin(); column != columns_.end();) {
    auto& [values, last_number] = column->second;
    if (sample - last_number >= capacity_) {
      column = columns_.erase(column);
      continue;
    }
    // A column that begins when the ring is full has had no numbers before.
    if (values.empty() && sample >= capacity_) {
      values.assign(capacity_, kNone);
    }
    const auto number = row.find(column->first);
    put_at(values, slot(sample), number == row.end() ? kNone : number->second);
    ++column;
  }
}

RecentSamples::Extract RecentSamples::extract(const std::vector<uint32_t>& ids, double since,
                                              size_t at_most) const {
  Extract result;
  std::vector<size_t> slots;
  const uint64_t oldest = added_ - std::min<uint64_t>(added_, std::min(capacity_, at_most));
  for (uint64_t sample = oldest; sample < added_; ++sample) {
    if (times_[slot(sample)] > since) {
      slots.push_back(slot(sample));
      result.times.push_back(times_[slot(sample)]);
    }
  }
  for (const uint32_t id : ids) {
    auto& series = result.series[id];
    series.assign(slots.size(), kNone);
    const auto column = columns_.find(id);
    if (column != columns_.end()) {
      std::transform(slots.begin(), slots.end(), series.begin(),
                     [&values = column->second.values](size_t at) { return values[at]; });
    }
  }
  return result;
}

std::vector<uint32_t> RecentSamples::ids() const {
  std::vector<uint32_t> result;
  for (const auto& [id, column] : columns_) {
    result.push_back(id);
  }
  return result;
}

}  // namespace kova_page
