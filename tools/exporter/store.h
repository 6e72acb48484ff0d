// Where the sampling thread leaves what the serving thread shows.
#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "tools/page/recent_samples.h"
#include "tools/page/snapshot.h"

namespace kova_exporter {

// All members may be called from any thread; none waits for the device.
class Store {
 public:
  // Throws std::system_error if the system has no descriptor left.
  explicit Store(double interval);
  ~Store();
  Store(const Store&) = delete;
  Store& operator=(const Store&) = delete;

  // Takes the place of the snapshot before. With `numbers` it adds a sample to the history.
  void publish(std::shared_ptr<const kova_page::Snapshot> snapshot,
               const kova_page::RecentSamples::Row* numbers);
  std::shared_ptr<const kova_page::Snapshot> latest() const;

  double interval() const { return interval_; }

  kova_page::RecentSamples::Extract history(const std::vector<uint32_t>& ids, double since,
                                            size_t at_most) const;
  std::vector<uint32_t> history_ids() const;

  // The program cannot go on; publish() and fail() make the descriptor readable.
  void fail(const std::string& reason);
  std::string failure() const;
  int descriptor() const { return descriptor_; }
  void acknowledge() const;

 private:
  void wake() const;

  const double interval_;
  int descriptor_;  // an eventfd
  mutable std::mutex mutex_;
  std::shared_ptr<const kova_page::Snapshot> latest_;
  kova_page::RecentSamples history_;
  std::string failure_;
};

}  // namespace kova_exporter
