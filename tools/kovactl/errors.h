// Exit codes of kovactl and the exception that carries one out of a command.
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

namespace kovactl {

// Documented in the man page: scripts rely on these numbers.
enum class ExitCode : int {
  success = 0,      // every read and write went well
  item_failed = 1,  // some reads or a write failed, or the result could not be written
  usage = 2,        // wrong arguments, or the module or the simulated machine cannot be loaded
  no_device = 3,    // no device library, or no device behind it
};

// Ends a command. `what()` is one line for people; `status` is the module's answer, if it gave one.
class CommandError : public std::runtime_error {
 public:
  CommandError(ExitCode code, const std::string& message,
               std::optional<uint32_t> status = std::nullopt)
      : std::runtime_error(message), code_(code), status_(status) {}

  ExitCode code() const { return code_; }
  std::optional<uint32_t> status() const { return status_; }

 private:
  ExitCode code_;
  std::optional<uint32_t> status_;
};

}  // namespace kovactl
