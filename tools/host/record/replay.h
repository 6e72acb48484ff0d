// A recording that is walked through, at the host's own pace.
#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "tools/host/session/device_host.h"

namespace kova_host {

// The clock of a simulated machine that is a recording. It stands until it is set.
class Replay {
 public:
  // Loads the libraries of `host` and takes the machine's clock over, at 0. Throws HostError
  // (usage) if the machine of `options` is no recording.
  Replay(std::shared_ptr<DeviceHost> host, const HostOptions& options);

  std::chrono::milliseconds length() const { return length_; }

  // What the recorder says of it; "" if the file has no note.
  const std::string& note() const { return note_; }

  // Unix time at which the recording began, from its note; the time of now without one.
  double begin() const { return begin_; }

  void set_time(std::chrono::milliseconds time) const;

  // A time at which codes are answered anew.
  struct Moment {
    std::chrono::milliseconds time{0};
    std::vector<uint32_t> codes;
  };

  // Within the recording, in order of time.
  std::vector<Moment> moments() const;

  // True if nothing moves but at those moments: the file holds what was recorded, and no more.
  bool is_pure() const { return is_pure_; }

 private:
  const std::shared_ptr<DeviceHost> host_;
  std::chrono::milliseconds length_{0};
  std::string note_;
  bool is_pure_ = false;
  double begin_ = 0;
};

}  // namespace kova_host
