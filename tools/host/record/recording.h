// A recording of what the device library answers in this process.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "tools/host/session/session.h"

namespace kova_host {

// Puts the recording stand-in into the process. Make it before the module is loaded, whose calls
// then go through it; it stays for the life of the process.
class Recording {
 public:
  struct Options {
    std::filesystem::path file;
    bool redact = false;    // blank what items.json calls private
    bool simulate = false;  // record the simulated device library
  };

  // Begins at time 0. Throws HostError: no_device without a device library to record, usage if
  // the file cannot be written, the stand-in is not there, or another one is preloaded before it.
  explicit Recording(const Options& options);

  // Unless finish() was called, the file is left as it was.
  ~Recording();
  Recording(const Recording&) = delete;
  Recording& operator=(const Recording&) = delete;

  // From now on answers are recorded at this time. A replay gives those of one time in turn,
  // however long they took.
  void set_time(std::chrono::milliseconds time) const;

  // Why the recording has ended early, when the disk is full for instance.
  std::optional<std::string> trouble() const;

  // Puts the file into its place. Nothing, or what is wrong with the recording; then the file may
  // hold the first part of it.
  std::optional<std::string> finish();

 private:
  void (*set_time_)(uint64_t) = nullptr;
  const char* (*error_)() = nullptr;
  uint32_t (*finish_)() = nullptr;
  void (*discard_)() = nullptr;
  bool is_finished_ = false;
};

// The device codes whose words are private, "0xA00011..0xA00015,0xB0001C", over all families and
// as many modules as there can be.
std::string private_codes();

}  // namespace kova_host
