// The numbers of the last half hour, for the page's charts.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace kova_page {

// A ring of samples with a column for each item that has had a number in it. Memory is bounded:
// a column costs eight bytes a sample, and goes when its last number has left the ring.
class RecentSamples {
 public:
  // `capacity` samples at most; one that comes less than `spacing` seconds after the one before
  // is not kept.
  RecentSamples(size_t capacity, double spacing) : capacity_(capacity), spacing_(spacing) {}

  using Row = std::map<uint32_t, double>;  // numbers by item ID

  // `time` is Unix time in seconds.
  void add(double time, const Row& row);

  struct Extract {
    std::vector<double> times;
    std::map<uint32_t, std::vector<double>> series;  // as long as `times`; NaN where no number was
  };

  // Samples later than `since`, and of those the newest `at_most`. An ID without a column has a
  // series of NaN.
  Extract extract(const std::vector<uint32_t>& ids, double since, size_t at_most) const;

  // Of the columns there are.
  std::vector<uint32_t> ids() const;

 private:
  struct Column {
    std::vector<double> values;  // in step with times_
    uint64_t last_number = 0;    // the sample that had it, counted from the first
  };

  size_t slot(uint64_t sample) const { return static_cast<size_t>(sample % capacity_); }

  size_t capacity_;
  double spacing_;
  uint64_t added_ = 0;         // samples since the start
  std::vector<double> times_;  // a ring once it is full
  std::map<uint32_t, Column> columns_;
};

}  // namespace kova_page
