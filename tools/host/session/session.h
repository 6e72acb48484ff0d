// The started module as a host sees it, in this process or in a worker.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <vector>

#include "tools/host/session/device_host.h"
#include "tools/host/system/json_ptr.h"

namespace kova_host {

// A started module; shutting it down is the destructor's work. Calls must not overlap.
class Session {
 public:
  // In this process. Reads every item of the machine, which takes a while on a slow bus.
  // Throws HostError: usage if a library or the machine description cannot be used,
  // no_device if the module finds no device, with the cause.
  explicit Session(const HostOptions& options);
  // Where `host`, which has loaded its libraries, has them.
  Session(std::shared_ptr<DeviceHost> host, bool simulated);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  // The capability document, an object. Throws HostError (no_device) if there is none.
  JsonPtr capability() const;

  // An answer for each question.
  std::vector<ItemAnswer> read(std::span<const ItemQuestion> questions) const {
    return host_->read(questions);
  }
  ItemAnswer read(const ItemQuestion& question) const { return read({&question, 1}).front(); }

  // The module's status.
  uint32_t write(uint32_t id, const Number& number) const { return host_->write(id, number); }

  // Past the module; nothing without a device library.
  std::optional<DeviceAnswer> read_code(uint32_t code) const;
  std::vector<DeviceAnswer> read_codes(std::span<const uint32_t> codes) const {
    return host_->read_codes(codes);
  }
  // Those of the codes for which a recording that is replayed has a blank; asked once.
  std::set<uint32_t> redacted(const std::vector<uint32_t>& codes) const;

 private:
  std::shared_ptr<DeviceHost> host_;
  mutable std::map<uint32_t, bool> redacted_;
};

}  // namespace kova_host
