// The module as a host sees it: loaded, started, asked, shut down.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "tools/host/session/pending_call.h"
#include "tools/host/system/json_ptr.h"

namespace kova_host {

struct HostOptions {
  std::string module;                  // path of the module; "" searches for it
  bool simulate = false;               // use the simulated device library
  std::optional<std::string> machine;  // description for it; without one it picks its own
};

// The module in the process, not started. It stays there: values that it made may outlive it.
class Module {
 public:
  // With options.simulate, the simulated device library is put into the process first.
  // Throws HostError (usage) if a library or the machine description cannot be used.
  explicit Module(const HostOptions& options);

  const std::filesystem::path& file() const { return file_; }

  // The module's entry points. Calls must not overlap.
  uint32_t initialize() const { return call(PendingCall(), initialize_); }
  uint32_t uninitialize() const { return call(PendingCall(), uninitialize_); }
  uint32_t capability(json_t* target) const { return call(PendingCall(), capability_, target); }
  uint32_t read(uint32_t id, json_t* value) const {
    return call(PendingCall::of_item(id), get_, id, value);
  }
  uint32_t write(uint32_t id, json_t* value) const {
    return call(PendingCall::of_item(id), set_, id, value);
  }

 private:
  // `pending` lives as long as the call.
  template <typename Function, typename... Arguments>
  static uint32_t call(const PendingCall& /*pending*/, Function* function, Arguments... arguments) {
    return function(arguments...);
  }

  std::filesystem::path file_;
  uint32_t (*initialize_)() = nullptr;
  uint32_t (*uninitialize_)() = nullptr;
  uint32_t (*capability_)(json_t*) = nullptr;
  uint32_t (*get_)(uint32_t, json_t*) = nullptr;
  uint32_t (*set_)(uint32_t, json_t*) = nullptr;
};

// A started module; shutting it down is the destructor's work. Calls must not overlap.
class Session {
 public:
  // Reads every item of the machine, which takes a while on a slow bus.
  // Throws HostError: usage if a library or the machine description cannot be used,
  // no_device if the module finds no device, with the cause.
  explicit Session(const HostOptions& options) : Session(Module(options), options.simulate) {}
  Session(const Module& module, bool simulated);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  // The capability document, an object. Throws HostError (no_device) if there is none.
  JsonPtr capability() const;

  // Both return the module's status. `value` stays the caller's.
  uint32_t read(uint32_t id, json_t* value) const { return module_.read(id, value); }
  uint32_t write(uint32_t id, json_t* value) const { return module_.write(id, value); }

 private:
  Module module_;
};

}  // namespace kova_host
