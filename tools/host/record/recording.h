// A recording of what the device library answers in this process.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "tools/host/session/device_host.h"

namespace kova_host {

// The recording stand-in before the device library of `host`. Make it before the session.
class Recording {
 public:
  struct Options {
    std::filesystem::path file;
    bool redact = false;  // blank what items.json calls private
  };

  // Loads the host's libraries; begins at time 0. Throws HostError: no_device without a device
  // library to record, usage if the file cannot be written, the stand-in is not there, or another
  // one is preloaded before it.
  Recording(std::shared_ptr<DeviceHost> host, const HostOptions& device, const Options& options);

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

  // The same when the host's worker has died: what was written until then.
  std::optional<std::string> finish_without_worker();

 private:
  const std::shared_ptr<DeviceHost> host_;
  const std::filesystem::path file_;
  bool is_finished_ = false;
};

// The device codes whose words are private, "0xA00011..0xA00015,0xB0001C", over all families and
// as many modules as there can be.
std::string private_codes();

}  // namespace kova_host
