// The module as a host sees it: loaded, started, asked, shut down.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "tools/host/json_ptr.h"
#include "tools/host/pending_call.h"

namespace kova_host {

struct HostOptions {
  std::string module;                  // path of the module; "" searches for it
  bool simulate = false;               // use the simulated device library
  std::optional<std::string> machine;  // description for it; without one it picks its own
};

// A started module; shutting it down is the destructor's work. Calls must not overlap.
class Session {
 public:
  // Reads every item of the machine, which takes a while on a slow bus.
  // Throws HostError: usage if a library or the machine description cannot be used,
  // no_device if the module finds no device.
  explicit Session(const HostOptions& options);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  // The capability document, an object. Throws HostError (no_device) if there is none.
  JsonPtr capability() const;

  // Both return the module's status. `value` stays the caller's.
  uint32_t read(uint32_t id, json_t* value) const {
    const PendingCall pending(id);
    return get_(id, value);
  }
  uint32_t write(uint32_t id, json_t* value) const {
    const PendingCall pending(id);
    return set_(id, value);
  }

 private:
  void load(const std::filesystem::path& library);
  uint32_t initialize() const;
  void start(bool simulated);

  void* library_ = nullptr;
  uint32_t (*initialize_)() = nullptr;
  uint32_t (*uninitialize_)() = nullptr;
  uint32_t (*capability_)(json_t*) = nullptr;
  uint32_t (*get_)(uint32_t, json_t*) = nullptr;
  uint32_t (*set_)(uint32_t, json_t*) = nullptr;
};

}  // namespace kova_host
