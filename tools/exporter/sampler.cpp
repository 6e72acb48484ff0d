// The sampling thread.
#include "tools/exporter/sampler.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "tools/exporter/log.h"
#include "tools/host/model/selection.h"
#include "tools/host/session/inventory.h"
#include "tools/host/system/errors.h"
#include "tools/host/system/unix_time.h"

namespace kova_exporter {
namespace {

using kova_host::Item;
using kova_host::Reading;
using kova_host::Readings;

kova_page::RecentSamples::Row numbers_of(const Readings& readings) {
  kova_page::RecentSamples::Row row;
  for (const auto& [id, reading] : readings) {
    if (const auto number = reading.number();
        number && reading.state == Reading::State::good && std::isfinite(*number)) {
      row.emplace(id, *number);
    }
  }
  return row;
}

bool all_failed(const Readings& readings) {
  return !readings.empty() && std::all_of(readings.begin(), readings.end(), [](const auto& entry) {
    return entry.second.state == Reading::State::failed;
  });
}

}  // namespace

Sampler::Sampler(kova_host::HostOptions options, Store& store,
                 std::chrono::nanoseconds between_looks)
    : options_(std::move(options)),
      store_(store),
      between_looks_(between_looks),
      list_(store.latest()->list) {
  thread_ = std::jthread([this](const std::stop_token& stop) { run(stop); });
}

Sampler::~Sampler() = default;

bool Sampler::finish(std::chrono::milliseconds patience) {
  thread_.request_stop();
  std::unique_lock lock(mutex_);
  return end_.wait_for(lock, patience, [this] { return ended_; });
}

std::chrono::steady_clock::duration Sampler::busy_for() const {
  const Clock::rep since = busy_since_.load();
  return since == 0 ? Clock::duration(0) : Clock::now().time_since_epoch() - Clock::duration(since);
}

void Sampler::run(const std::stop_token& stop) {
  const auto interval =
      std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(store_.interval()));
  auto next = Clock::now();
  std::unique_lock lock(mutex_);
  while (!stop.stop_requested() && store_.failure().empty()) {
    lock.unlock();
    const auto began = Clock::now();
    busy_since_ = began.time_since_epoch().count();
    work_once(stop);
    busy_since_ = 0;
    lock.lock();
    next = kova_host::next_sweep(next, interval, began, Clock::now());
    wake_.wait_until(lock, stop, next, [] { return false; });
  }
  lock.unlock();
  session_.reset();
  lock.lock();
  ended_ = true;
  end_.notify_all();
}

void Sampler::work_once(const std::stop_token& stop) {
  try {
    if (session_ == nullptr) {
      start_module();
    } else {
      look_for_new_items();
    }
    sweep(stop);
  } catch (const kova_host::HostError& error) {
    // What was wrong with the arguments at the start will not mend itself.
    if (error.fault() == kova_host::Fault::usage && !has_started_) {
      store_.fail(error.what());
    } else {
      publish_failure(error.what());
    }
  } catch (const std::exception& error) {
    publish_failure(error.what());
  }
}

void Sampler::start_module() {
  auto session = std::make_unique<kova_host::Session>(options_);
  auto list = std::make_shared<kova_page::ItemList>();
  list->number = list_->number + 1;
  list->items = kova_host::Inventory::of(*session).items();
  list_ = std::move(list);
  plan_.emplace(list_->items);
  session_ = std::move(session);
  has_started_ = true;
  last_look_ = Clock::now();
  log(LogLevel::info, "the device has {} items", kova_host::distinct(list_->items).size());
}

// A family that comes later, such as a battery that is put in, is in the document of a new start
// only. Items that are gone stay: their reads fail.
void Sampler::look_for_new_items() {
  if (Clock::now() - last_look_ < between_looks_) {
    return;
  }
  last_look_ = Clock::now();
  const auto found = kova_host::Inventory::of(*session_);
  const auto is_new = [this](const Item& item) {
    return std::none_of(list_->items.begin(), list_->items.end(),
                        [&item](const Item& known) { return known.id == item.id; });
  };
  if (std::any_of(found.items().begin(), found.items().end(), is_new)) {
    session_.reset();
    start_module();
  }
}

void Sampler::sweep(const std::stop_token& stop) {
  const auto began = Clock::now();
  auto readings = kova_host::sweep_items(*session_, *plan_, began.time_since_epoch(),
                                         [&stop](const Item&) { return !stop.stop_requested(); });
  if (!readings) {
    return;
  }
  const bool lost = all_failed(*readings);
  publish(std::move(*readings), lost ? "no item of the device can be read" : "", began);
  if (lost) {
    // A module that starts anew finds a device that has come back, or another one.
    session_.reset();
  }
}

// The items and what was last known of them stay; none of it is fresh.
void Sampler::publish_failure(const std::string& error) {
  const auto before = store_.latest();
  if (before->error != error) {
    log(LogLevel::warn, "{}", error);
  }
  auto snapshot = std::make_shared<kova_page::Snapshot>(*before);
  snapshot->error = error;
  store_.publish(std::move(snapshot), nullptr);
}

void Sampler::publish(Readings readings, std::string error, Clock::time_point began) {
  const auto before = store_.latest();
  auto snapshot = std::make_shared<kova_page::Snapshot>();
  snapshot->list = list_;
  snapshot->number = before->number + 1;
  snapshot->time = kova_host::unix_time();
  snapshot->ended = Clock::now();
  snapshot->duration = std::chrono::duration<double>(snapshot->ended - began).count();
  snapshot->error = std::move(error);
  for (const auto& [id, reading] : readings) {
    if (reading.state != Reading::State::failed) {
      snapshot->last_success[id] = snapshot->time;
    } else if (const auto known = before->last_success.find(id);
               known != before->last_success.end()) {
      snapshot->last_success.insert(*known);
    }
  }
  if (snapshot->error != before->error && before->number > 0) {
    log(LogLevel::warn, "{}", snapshot->error.empty() ? "the device answers" : snapshot->error);
  }
  const kova_page::RecentSamples::Row numbers = numbers_of(readings);
  snapshot->readings = std::move(readings);
  log(LogLevel::debug, "sweep {}: {:.3f} s", snapshot->number, snapshot->duration);
  store_.publish(std::move(snapshot), &numbers);
}

}  // namespace kova_exporter
