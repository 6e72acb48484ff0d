// Hands snapshots from the sampling thread to the serving one.
#include "tools/exporter/store.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <system_error>

namespace kova_exporter {
namespace {

constexpr double kHistorySeconds = 1800;
constexpr double kHistorySpacing = 1;  // a faster interval does not make the history larger

size_t history_samples(double interval) {
  return static_cast<size_t>(std::ceil(kHistorySeconds / std::max(interval, kHistorySpacing))) + 1;
}

}  // namespace

Store::Store(double interval)
    : interval_(interval),
      descriptor_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      history_(history_samples(interval), kHistorySpacing) {
  if (descriptor_ < 0) {
    throw std::system_error(errno, std::generic_category(), "cannot make an event descriptor");
  }
  auto empty = std::make_shared<kova_page::Snapshot>();
  empty->list = std::make_shared<const kova_page::ItemList>();
  latest_ = std::move(empty);
}

Store::~Store() {
  close(descriptor_);
}

void Store::publish(std::shared_ptr<const kova_page::Snapshot> snapshot,
                    const kova_page::RecentSamples::Row* numbers) {
  {
    const std::lock_guard lock(mutex_);
    if (numbers != nullptr) {
      history_.add(snapshot->time, *numbers);
    }
    latest_.swap(snapshot);  // the old one is released outside the lock
  }
  wake();
}

std::shared_ptr<const kova_page::Snapshot> Store::latest() const {
  const std::lock_guard lock(mutex_);
  return latest_;
}

kova_page::RecentSamples::Extract Store::history(const std::vector<uint32_t>& ids, double since,
                                                 size_t at_most) const {
  const std::lock_guard lock(mutex_);
  return history_.extract(ids, since, at_most);
}

std::vector<uint32_t> Store::history_ids() const {
  const std::lock_guard lock(mutex_);
  return history_.ids();
}

void Store::fail(const std::string& reason) {
  {
    const std::lock_guard lock(mutex_);
    failure_ = reason;
  }
  wake();
}

std::string Store::failure() const {
  const std::lock_guard lock(mutex_);
  return failure_;
}

void Store::wake() const {
  (void)eventfd_write(descriptor_, 1);
}

void Store::acknowledge() const {
  eventfd_t count = 0;
  (void)eventfd_read(descriptor_, &count);
}

}  // namespace kova_exporter
