// What the environment says about a recording.
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "simulator/device_code.h"

namespace kova_recorder {

/// What is wrong with a recording, as the one line that the user is shown.
class RecordingError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct Settings {
  std::string file;
  std::vector<kova_sim::CodeRun> redacted;
  std::optional<std::uint32_t> step_ms;  // none: real time
  bool file_is_by_process = false;       // its name has the process ID in it

  /// KOVA_RECORD_*; throws RecordingError if one of them makes no sense.
  static Settings from_environment();
};

}  // namespace kova_recorder
