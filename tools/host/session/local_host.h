// Module and device library in this process.
#pragma once

#include <memory>

#include "tools/host/session/device_host.h"
#include "tools/host/session/guard_library.h"
#include "tools/host/session/module.h"
#include "tools/host/session/stand_ins.h"

namespace kova_host {

class LocalHost : public DeviceHost {
 public:
  LocalHost() = default;
  // A worker's: tells on `page`, which has to outlive it, where it is, and puts the guard before
  // the device library.
  explicit LocalHost(Whereabouts& page) : page_(&page) {}

  Loaded load(const Loading& loading) override;
  uint32_t start() override;
  void end() override;
  Document capability() override;
  std::vector<ItemAnswer> read(std::span<const ItemQuestion> questions) override;
  uint32_t write(uint32_t id, const Number& number) override;
  std::vector<DeviceAnswer> read_codes(std::span<const uint32_t> codes) override;
  DeviceDiagnosis diagnose() override;
  std::vector<uint32_t> redacted(std::span<const uint32_t> codes) override;
  std::vector<RecordedCode> recorded_codes() override;
  void set_time(uint64_t milliseconds) override;
  std::string recording_trouble() override;
  std::string end_recording(bool keep) override;

  ItemAnswer read_one(const ItemQuestion& question) const;
  void leave_out(std::span<const uint32_t> codes) { guard_.leave_out(codes); }

 private:
  Whereabouts* page_ = nullptr;
  Guard guard_;
  std::unique_ptr<StandIns> stand_ins_;
  std::unique_ptr<Module> module_;
};

}  // namespace kova_host
