// The time as exports carry it.
#pragma once

#include <chrono>

namespace kova_host {

// Seconds since the Unix epoch, with milliseconds.
inline double unix_time() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return static_cast<double>(std::chrono::duration_cast<std::chrono::milliseconds>(now).count()) /
         1000;
}

}  // namespace kova_host
