// How a command uses the device.
#include "tools/kovactl/device_use.h"

#include <utility>

#include "tools/kovactl/output.h"
#include "tools/kovactl/progress.h"
#include "tools/kovactl/signals.h"

namespace kovactl {

using namespace kova_host;
namespace {

using std::chrono::steady_clock;

constexpr std::chrono::seconds kPatience{1};  // with a call that keeps the program from its end
constexpr double kLongestEndSeconds = 10;     // of the module and of the process

}  // namespace

DeviceUse::DeviceUse(const GlobalOptions& options) {
  watch_signals();
  settings_.limit_seconds = options.timeout_seconds.value_or(0);
  const double end = settings_.limit_seconds > 0
                         ? std::min(settings_.limit_seconds, kLongestEndSeconds)
                         : kLongestEndSeconds;
  settings_.patience = std::chrono::milliseconds(static_cast<int64_t>(end * 1000));
  settings_.waiting = this;
  settings_.tell = [this](WorkerEvent event, const std::string& text) {
    died_ = died_ || event != WorkerEvent::recovery;
    trouble_at_end_ = event == WorkerEvent::bad_end ? text : trouble_at_end_;
  };
}

void DeviceUse::let_command_end() {
  ends_in_order_ = true;
  promise_to_end();
}

bool DeviceUse::interrupted() const {
  return signal_that_came() != 0;
}

std::shared_ptr<WorkerHost> DeviceUse::host() {
  return std::make_shared<WorkerHost>(settings_);
}

std::unique_ptr<Session> DeviceUse::start(const HostOptions& options) {
  const Progress progress("starting the module");
  auto worker = host();
  worker->load({options});
  return std::make_unique<Session>(std::move(worker), options.simulate);
}

void DeviceUse::while_waiting(Step step, int descriptor) {
  step_ = std::move(step);
  step_descriptor_ = descriptor;
}

void DeviceUse::report_end() const {
  if (!trouble_at_end_.empty()) {
    report(trouble_at_end_);
  }
}

void DeviceUse::require_good_end() const {
  if (!trouble_at_end_.empty()) {
    throw HostError(Fault::no_device, trouble_at_end_);
  }
}

std::vector<int> DeviceUse::descriptors() const {
  std::vector<int> descriptors;
  if (!interrupted()) {  // or it would wake for ever
    descriptors.push_back(signal_descriptor());
  }
  if (step_descriptor_ >= 0) {
    descriptors.push_back(step_descriptor_);
  }
  return descriptors;
}

bool DeviceUse::go_on(const CallUnderWay& call) {
  draw_progress(call.subject);
  if (step_ && !step_(call)) {
    return false;
  }
  return !interrupted() || (ends_in_order_ && steady_clock::now() - call.since < kPatience);
}

}  // namespace kovactl
