// The libraries that stand in for the device library in this process, or before it: the simulator
// and the recorder. They are told what to do through the environment that they read.
#pragma once

#include <cstdint>
#include <string>

#include "tools/host/session/device_host.h"

namespace kova_host {

class StandIns {
 public:
  // Settles what stands in, and refuses libraries that are preloaded in its place. Throws HostError
  // (usage), or no_device where there is nothing to record.
  explicit StandIns(const Loading& loading);

  // What the module is to find as the device library; "" for the real one.
  const std::string& library() const { return library_; }

  // Brings it in, before the module; throws HostError if it cannot do what it is to.
  void load();

  // How long the recording lasts that is replayed; its clock stands at 0 from now on.
  uint64_t begin_replay(const HostOptions& options);

  // As DeviceHost has them.
  std::vector<RecordedCode> recorded_codes() const;
  void set_time(uint64_t milliseconds) const;
  std::string trouble() const;
  std::string end_recording(bool keep);

 private:
  void load_recorder();

  bool simulates_ = false;
  bool records_ = false;
  std::string library_;
  void (*set_time_)(uint64_t) = nullptr;
  void (*tell_moments_)(void (*)(void*, uint32_t, uint64_t), void*) = nullptr;
  const char* (*error_)() = nullptr;
  uint32_t (*finish_)() = nullptr;
  void (*discard_)() = nullptr;
};

}  // namespace kova_host
