// The thread that reads the device: the only one that calls the module, as the module demands.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

#include "tools/exporter/store.h"
#include "tools/host/session/session.h"
#include "tools/host/values/sweep_plan.h"

namespace kova_exporter {

// Sweeps over the items at each interval, as a SweepPlan has it, and publishes each sweep. A device
// that is not there, or stops answering altogether, is looked for again at each interval.
class Sampler {
 public:
  // Starts at once. The store must outlive the sampler. Items that the device did not have before
  // are looked for with a sweep that comes `between_looks` after the last look.
  Sampler(kova_host::HostOptions options, Store& store,
          std::chrono::nanoseconds between_looks = std::chrono::minutes(1));
  // Only after finish() has returned true: it waits for the thread for as long as that takes.
  ~Sampler();
  Sampler(const Sampler&) = delete;
  Sampler& operator=(const Sampler&) = delete;

  // Asks the thread to end, and waits for it. False if it hangs in the device library: then
  // nothing that it uses may be destroyed any more, and the process can only be left.
  bool finish(std::chrono::milliseconds patience);

  // How long the sweep (or the start of the module) that is running has taken; 0 between sweeps.
  std::chrono::steady_clock::duration busy_for() const;

 private:
  using Clock = std::chrono::steady_clock;

  void run(const std::stop_token& stop);
  void work_once(const std::stop_token& stop);
  void start_module();
  void look_for_new_items();
  void sweep(const std::stop_token& stop);
  void publish_failure(const std::string& error);
  void publish(kova_host::Readings readings, std::string error, Clock::time_point began);

  kova_host::HostOptions options_;
  Store& store_;
  const std::chrono::nanoseconds between_looks_;
  std::unique_ptr<kova_host::Session> session_;
  std::shared_ptr<const kova_page::ItemList> list_;
  std::optional<kova_host::SweepPlan> plan_;  // of the list
  bool has_started_ = false;
  Clock::time_point last_look_;

  std::atomic<Clock::rep> busy_since_{0};
  std::mutex mutex_;
  std::condition_variable_any wake_;
  bool ended_ = false;
  std::condition_variable end_;
  std::jthread thread_;  // last: it uses all of the above
};

}  // namespace kova_exporter
