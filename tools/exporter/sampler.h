// The thread that reads the device: the only one that calls the module, as the module demands.
#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "tools/exporter/store.h"
#include "tools/host/judgements/rules_file.h"
#include "tools/host/session/session.h"
#include "tools/host/session/worker_host.h"
#include "tools/host/values/sweep_plan.h"

namespace kova_exporter {

// Sweeps over the items at each interval, as a SweepPlan has it, and publishes each sweep. The
// device is read by a worker, which is started again when it dies. A device that is not there, or
// stops answering altogether, is looked for again at each interval.
class Sampler : private kova_host::Waiting {
 public:
  // Starts at once. The store must outlive the sampler. `worker` tells how workers are started;
  // `between_looks` is the time between two looks for items that the device did not have before.
  Sampler(kova_host::HostOptions options, Store& store, kova_host::WorkerSettings worker = {},
          std::chrono::nanoseconds between_looks = std::chrono::minutes(1),
          kova_host::RulesFile rules = {});
  // Ends the sweep and the worker, whatever the device library does, within two seconds.
  ~Sampler() override;
  Sampler(const Sampler&) = delete;
  Sampler& operator=(const Sampler&) = delete;

 private:
  using Clock = std::chrono::steady_clock;

  std::vector<int> descriptors() const override;
  bool go_on(const kova_host::CallUnderWay& call) override;

  void run();
  void work_once();
  void start_module();
  void look_for_new_items();
  void sweep();
  kova_host::Thresholds thresholds_for(const std::vector<kova_host::Item>& items) const;
  void note(kova_host::WorkerEvent event, const std::string& text);
  void publish_failure(const std::string& error);
  void publish(kova_host::Readings readings, std::string error, Clock::time_point began);

  const kova_host::HostOptions options_;
  Store& store_;
  const kova_host::WorkerSettings worker_;
  const std::chrono::nanoseconds between_looks_;
  const kova_host::RulesFile rules_;
  std::shared_ptr<kova_host::DeviceHost> host_;  // for good, with what it knows of deaths
  std::unique_ptr<kova_host::Session> session_;
  std::shared_ptr<const kova_page::ItemList> list_;
  std::optional<kova_host::SweepPlan> plan_;  // of the list
  std::string trouble_;                       // with the device library; "" once it answers again
  Clock::time_point last_look_;

  int stop_ = -1;  // an eventfd, readable once the thread is to end
  std::atomic<Clock::rep> stop_time_{0};
  std::thread thread_;  // last: it uses all of the above
};

}  // namespace kova_exporter
