// How a command uses the device: in a worker, within its time, with progress shown and Ctrl-C
// heard.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "tools/host/session/session.h"
#include "tools/host/session/worker_host.h"
#include "tools/kovactl/command_line.h"

namespace kovactl {

class DeviceUse : public kova_host::Waiting {
 public:
  explicit DeviceUse(const GlobalOptions& options);

  // For a command that is to end within so many seconds from its start, however fast each call
  // comes back; 0 for no limit. Before the first host.
  void limit_all(double seconds) { settings_.limit_of_all_seconds = seconds; }

  // For a command that a signal ends in order, with a status that tells of what it has done until
  // then. A call that lasts a second then is given up: CallGivenUp.
  void let_command_end();
  bool interrupted() const;

  // A worker, with nothing loaded.
  std::shared_ptr<kova_host::WorkerHost> host();
  // The same, loaded and started, with progress on a terminal.
  std::unique_ptr<kova_host::Session> start(const kova_host::HostOptions& options);

  // While the device is waited for, `step` is called time and again, and when `descriptor` (if it
  // is none, -1) is readable; it ends the waiting by false.
  using Step = std::function<bool(const kova_host::CallUnderWay&)>;
  void while_waiting(Step step, int descriptor);

  // True if a worker has died, or could not be made to end.
  bool anything_died() const { return died_; }
  // Tells on stderr what was wrong with the end of the last worker; or throws it, HostError.
  void report_end() const;
  void require_good_end() const;

  std::vector<int> descriptors() const override;
  bool go_on(const kova_host::CallUnderWay& call) override;

 private:
  kova_host::WorkerSettings settings_;
  bool ends_in_order_ = false;
  Step step_;
  int step_descriptor_ = -1;
  bool died_ = false;
  std::string trouble_at_end_;
};

}  // namespace kovactl
