// The guard before the device library, loaded.
#pragma once

#include <span>
#include <string>

#include "tools/host/session/device_guard.h"

namespace kova_host {

class Guard {
 public:
  // Puts the guard into the process, with `library` behind it ("" for the device library at its own
  // places): the module then finds the guard. Does nothing if it is not installed, or the library
  // cannot be guarded: then that is left to be found as ever.
  void open(const std::string& library, Whereabouts& page);

  // These codes are not asked any more.
  void leave_out(std::span<const uint32_t> codes) const;

 private:
  GuardLeaveOut* leave_out_ = nullptr;
};

}  // namespace kova_host
