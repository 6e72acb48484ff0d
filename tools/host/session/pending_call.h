// The call into the module or the device library that has not come back yet, for a thread that has
// to tell why nothing happens: nobody can end such a call.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace kova_host {

// Marks a call as under way while it lives. There is one call at a time.
class PendingCall {
 public:
  enum class Subject {
    module,       // the start, the end, the document: no single item
    item,         // a read or a write of the item with this ID
    device_code,  // a read of this code, past the module
  };

  // Of the module.
  PendingCall() : PendingCall(Subject::module, 0) {}
  static PendingCall of_item(uint32_t id) { return {Subject::item, id}; }
  static PendingCall of_code(uint32_t code) { return {Subject::device_code, code}; }
  ~PendingCall();
  PendingCall(const PendingCall&) = delete;
  PendingCall& operator=(const PendingCall&) = delete;

  struct State {
    Subject subject;
    uint32_t number;  // ID or code
    std::chrono::steady_clock::time_point since;
  };

  // From any thread; nothing if no call is under way.
  static std::optional<State> now();

 private:
  PendingCall(Subject subject, uint32_t number);
};

}  // namespace kova_host
