// The call into the module that has not come back yet, for a thread that has to tell why nothing
// happens: what the device library does within a call, nobody can end.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace kova_host {

// Marks a call as under way while it lives. There is one call at a time.
class PendingCall {
 public:
  // The call concerns no single item: the start and the end.
  static constexpr uint32_t kNoItem = 0;

  explicit PendingCall(uint32_t id);
  ~PendingCall();
  PendingCall(const PendingCall&) = delete;
  PendingCall& operator=(const PendingCall&) = delete;

  struct State {
    uint32_t id;  // or kNoItem
    std::chrono::steady_clock::time_point since;
  };

  // From any thread; nothing if no call is under way.
  static std::optional<State> now();
};

}  // namespace kova_host
