// The numbers of a long course, thinned out so that no high and no low is lost.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <utility>
#include <vector>

#include "tools/page/recent_samples.h"

namespace kova_page {

// Samples are kept as they come, as long as no more than three come within a step. More than that
// become three: the lowest and the highest in the order in which they came, and the last; which
// is none if there was no number at some time of the step, so that a gap stays one.
class ThinnedSamples {
 public:
  // In seconds.
  explicit ThinnedSamples(double step) : step_(step) {}

  // The numbers that are new at `time`, Unix time in seconds and later than all before; NaN for an
  // item that has none any more. The others stay what they were.
  void add(double time, const std::vector<std::pair<uint32_t, double>>& numbers);

  // True if something was left out.
  bool is_thinned() const { return is_thinned_; }

  // Of all items that ever had a number.
  RecentSamples::Extract extract() const;

 private:
  static constexpr size_t kMost = 3;  // samples a step

  struct Line {
    double now = 0;
    std::array<double, kMost> first{};  // samples of the step
    double low = 0;
    double high = 0;
    size_t low_at = 0;  // the sample in the step
    size_t high_at = 0;
    bool has_gap = false;
    std::vector<double> kept;  // in step with times_
  };

  Line& line(uint32_t id);
  void begin_step(Line& line) const;
  void take(Line& line, double number) const;
  std::array<double, kMost> kept_of(const Line& line) const;
  void end_step();

  double step_;
  bool is_thinned_ = false;
  double begin_ = 0;  // of the step
  size_t count_ = 0;  // samples in it
  std::array<double, kMost> first_times_{};
  double last_time_ = 0;
  std::vector<double> times_;
  std::map<uint32_t, Line> lines_;
};

}  // namespace kova_page
