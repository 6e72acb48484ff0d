// Samples of items at a fixed interval, read on a thread of its own.
#include "tools/kovactl/watch_sampler.h"

#include <algorithm>
#include <utility>

#include "tools/host/system/interrupts.h"

namespace kovactl {

using namespace kova_host;

using std::chrono::steady_clock;

WatchSampler::WatchSampler(const Session& session, Plan plan)
    : session_(session),
      plan_(std::move(plan)),
      thread_([this](const std::stop_token& stop) { work(stop); }) {}

std::optional<Sample> WatchSampler::take() {
  const std::lock_guard lock(mutex_);
  news_.lower();
  if (error_) {
    std::rethrow_exception(error_);
  }
  wake_.notify_all();
  return std::exchange(sample_, std::nullopt);
}

bool WatchSampler::finished() const {
  const std::lock_guard lock(mutex_);
  return last_ && !sample_;
}

void WatchSampler::pause(bool paused) {
  const std::lock_guard lock(mutex_);
  paused_ = paused;
  wake_.notify_all();
}

void WatchSampler::work(const std::stop_token& stop) {
  block_all_signals();
  try {
    sample_all(stop);
  } catch (...) {
    const std::lock_guard lock(mutex_);
    error_ = std::current_exception();
    news_.raise();
  }
}

void WatchSampler::sample_all(const std::stop_token& stop) {
  SweepPlan sweeps(plan_.items);
  auto next = steady_clock::now();
  for (uint32_t number = 1; wait_for_turn(stop, next); ++number) {
    const auto began = steady_clock::now();
    auto readings = sweep_items(session_, sweeps, began.time_since_epoch(),
                                [&stop](const Item&) { return !stop.stop_requested(); });
    next = next_sweep(next, plan_.interval, began, steady_clock::now());
    if (!readings) {
      return;
    }
    const bool last = number == plan_.count;
    hand_over({std::move(*readings), std::chrono::system_clock::now()}, last);
    if (last) {
      return;
    }
  }
}

bool WatchSampler::wait_for_turn(const std::stop_token& stop, steady_clock::time_point time) {
  std::unique_lock lock(mutex_);
  wake_.wait(lock, stop, [this] { return !sample_; });
  wake_.wait_until(lock, stop, time, [] { return false; });
  wake_.wait(lock, stop, [this] { return !paused_; });
  return !stop.stop_requested();
}

void WatchSampler::hand_over(Sample sample, bool last) {
  const std::lock_guard lock(mutex_);
  sample_ = std::move(sample);
  last_ = last;
  news_.raise();
}

}  // namespace kovactl
