// The call into the module or the device library that has not come back yet.
#include "tools/host/session/pending_call.h"

#include <mutex>

namespace kova_host {
namespace {

struct Shared {
  std::mutex mutex;
  std::optional<PendingCall::State> state;
};

Shared& shared() {
  static Shared instance;
  return instance;
}

void become(const std::optional<PendingCall::State>& state) {
  const std::lock_guard lock(shared().mutex);
  shared().state = state;
}

}  // namespace

PendingCall::PendingCall(Subject subject, uint32_t number) {
  become(State{subject, number, std::chrono::steady_clock::now()});
}

PendingCall::~PendingCall() {
  become(std::nullopt);
}

std::optional<PendingCall::State> PendingCall::now() {
  const std::lock_guard lock(shared().mutex);
  return shared().state;
}

}  // namespace kova_host
