// Samples of items at a fixed interval, read on a thread of its own.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "tools/host/values/sweep_plan.h"
#include "tools/kovactl/event_flag.h"

namespace kovactl {

struct Sample {
  kova_host::Readings readings;
  std::chrono::system_clock::time_point taken;
};

class WatchSampler {
 public:
  struct Plan {
    std::vector<kova_host::Item> items;
    std::chrono::steady_clock::duration interval;
    uint32_t count;  // samples; 0 for no end
  };

  // From now on the session is the sampler's alone.
  WatchSampler(const kova_host::Session& session, Plan plan);
  // Returns after the read under way, which may last.
  ~WatchSampler() = default;

  // Raised when take() has something new to tell.
  EventFlag& news() { return news_; }

  // The next sample, once; the one after it is read only then. Rethrows what ended the sampling.
  std::optional<Sample> take();

  // True once the last sample was taken.
  bool finished() const;

  // Holds back the samples that have not begun yet; the next one follows as soon as it goes on.
  void pause(bool paused);

 private:
  void work(const std::stop_token& stop);
  bool wait_for_turn(const std::stop_token& stop, std::chrono::steady_clock::time_point time);
  void sample_all(const std::stop_token& stop);
  void hand_over(Sample sample, bool last);

  const kova_host::Session& session_;
  const Plan plan_;
  EventFlag news_;
  mutable std::mutex mutex_;
  std::condition_variable_any wake_;
  std::optional<Sample> sample_;  // from here on under the mutex
  bool paused_ = false;
  bool last_ = false;
  std::exception_ptr error_;
  std::jthread thread_;  // the last member: it is stopped before the others go
};

}  // namespace kovactl
