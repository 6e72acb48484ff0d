// A recording that is walked through, at the host's own pace.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "tools/host/session/session.h"

namespace kova_host {

// The clock of a simulated machine that is a recording. It stands until it is set.
class Replay {
 public:
  // Takes the clock over, at 0: call it once `options` have put the simulated device library into
  // the process (as Module does), and before the module starts. Throws HostError (usage) if the
  // machine is no recording.
  explicit Replay(const HostOptions& options);

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
  void (*set_time_)(uint64_t) = nullptr;
  void (*tell_moments_)(void (*)(void*, uint32_t, uint64_t), void*) = nullptr;
  std::chrono::milliseconds length_{0};
  std::string note_;
  bool is_pure_ = false;
  double begin_ = 0;
};

}  // namespace kova_host
