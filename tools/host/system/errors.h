// What ends a host's work early: one line for people, and what kind of trouble it is.
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>

namespace kova_host {

enum class Fault {
  usage,      // a value, a name or a file that cannot be used as it was given
  no_device,  // no device library, or no device behind it
  item,       // an item that the work needs cannot be read
};

// `what()` is one line for people; `status` is the module's answer, if it gave one.
class HostError : public std::runtime_error {
 public:
  HostError(Fault fault, const std::string& message, std::optional<uint32_t> status = std::nullopt)
      : std::runtime_error(message), fault_(fault), status_(status) {}

  Fault fault() const { return fault_; }
  std::optional<uint32_t> status() const { return status_; }

 private:
  Fault fault_;
  std::optional<uint32_t> status_;
};

}  // namespace kova_host
