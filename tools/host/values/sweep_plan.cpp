// Plans sweeps by what items are for.
#include "tools/host/values/sweep_plan.h"

#include <algorithm>
#include <iterator>
#include <string>

#include "tools/host/model/selection.h"

namespace kova_host {
namespace {

bool can_change(const Item& item) {
  return item.facts.role != Role::identity && item.facts.role != Role::factory_default;
}

bool has_failed(const Reading& reading) {
  return reading.state == Reading::State::failed;
}

}  // namespace

SweepPlan::SweepPlan(const std::vector<Item>& items, Time lasting)
    : items_(distinct(items)), lasting_(lasting) {}

std::vector<Item> SweepPlan::due(Time now) {
  const bool full = !last_full_ || now - *last_full_ >= lasting_ || now < *last_full_;
  if (full) {
    last_full_ = now;
  }
  asked_.clear();
  std::vector<Item> result;
  std::copy_if(items_.begin(), items_.end(), std::back_inserter(result), [&](const Item& item) {
    const auto known = readings_.find(item.id);
    return full || can_change(item) || known == readings_.end() || has_failed(known->second);
  });
  return result;
}

std::vector<Item> SweepPlan::take(const Readings& readings) {
  std::set<uint32_t> turned;
  for (const auto& [id, reading] : readings) {
    const auto known = readings_.find(id);
    if (known != readings_.end() && has_failed(known->second) != has_failed(reading)) {
      turned.insert(id);
    }
    readings_[id] = reading;
    asked_.insert(id);
  }
  std::set<std::string> families;
  for (const Item& item : items_) {
    if (turned.contains(item.id)) {
      families.insert(item.family);
    }
  }
  std::vector<Item> result;
  std::copy_if(items_.begin(), items_.end(), std::back_inserter(result), [&](const Item& item) {
    return families.contains(item.family) && !asked_.contains(item.id);
  });
  return result;
}

Readings sweep_items(const Session& session, SweepPlan& plan, SweepPlan::Time now) {
  for (auto items = plan.due(now); !items.empty();) {
    items = plan.take(read_items(session, items));
  }
  return plan.readings();
}

std::chrono::steady_clock::time_point next_sweep(std::chrono::steady_clock::time_point planned,
                                                 std::chrono::steady_clock::duration interval,
                                                 std::chrono::steady_clock::time_point began,
                                                 std::chrono::steady_clock::time_point ended) {
  // After a pause there is nothing to make up for.
  const auto beat = began - planned > interval ? began : planned;
  return std::max(beat + interval, ended + (ended - began));
}

}  // namespace kova_host
