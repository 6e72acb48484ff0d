// Module and device library in a worker, which is started again when they end it.
#pragma once

#include <map>
#include <memory>
#include <set>

#include "tools/host/session/device_host.h"
#include "tools/host/session/worker_link.h"

namespace kova_host {

class WorkerHost : public DeviceHost {
 public:
  explicit WorkerHost(WorkerSettings settings) : settings_(std::move(settings)) {}
  // Lets the process end in order, for as long as the settings have patience.
  ~WorkerHost() override;

  Loaded load(const Loading& loading) override;
  uint32_t start() override;
  void end() override;
  Document capability() override;
  // An item on which the worker dies is one that fails, with the reason; it is left out for a while
  // once that has happened three times in a row. So do all others for which no worker can be had.
  std::vector<ItemAnswer> read(std::span<const ItemQuestion> questions) override;
  uint32_t write(uint32_t id, const Number& number) override;
  std::vector<DeviceAnswer> read_codes(std::span<const uint32_t> codes) override;
  DeviceDiagnosis diagnose() override;
  std::vector<uint32_t> redacted(std::span<const uint32_t> codes) override;
  std::vector<RecordedCode> recorded_codes() override;
  void set_time(uint64_t milliseconds) override;
  std::string recording_trouble() override;
  std::string end_recording(bool keep) override;

 private:
  using Clock = std::chrono::steady_clock;

  // What one item or code has done to workers.
  struct Record {
    int deaths = 0;  // in a row
    std::string reason;
    Clock::time_point left_out_until;
  };

  using Places = std::vector<size_t>;  // of questions

  // The worker, made anew if there is none. Throws WorkerDeath if that is not possible now.
  WorkerLink& link();
  void make_worker();
  // Waits for the end of the pause after a death; throws WorkerDeath if that is far.
  void wait_for_turn() const;
  void start_worker();
  // What can be done again after the death of a worker, until it is done or nobody may hope.
  template <typename Work>
  auto persist(const Work& work);
  void ask_all(std::span<const ItemQuestion> questions, std::vector<ItemAnswer>& answers,
               Places& open);
  void note(const WorkerDeath& death);
  bool survives(const WorkerDeath& death) const;
  void leave_out(std::map<uint32_t, Record>& records, const WorkerDeath& death);
  void leave_out_codes_of_worker(WorkerLink& link);
  void retry_what_was_left_out();
  void forget_deaths_of(uint32_t id);
  void tell(WorkerEvent event, const std::string& text) const;

  const WorkerSettings settings_;
  std::unique_ptr<WorkerLink> link_;
  std::optional<Loading> loading_;
  bool started_ = false;  // as the host wants it
  std::optional<uint64_t> time_;
  int deaths_in_a_row_ = 0;
  std::string last_reason_;
  Clock::time_point not_before_;
  std::map<uint32_t, Record> items_;  // by ID
  std::map<uint32_t, Record> codes_;
};

}  // namespace kova_host
