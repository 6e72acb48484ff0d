// Thins out the numbers of a long course.
#include "tools/page/thinned_samples.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace kova_page {
namespace {

constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();

}  // namespace

ThinnedSamples::Line& ThinnedSamples::line(uint32_t id) {
  const auto [place, is_new] = lines_.try_emplace(id);
  if (is_new) {
    Line& line = place->second;
    line.now = kNoNumber;
    line.first.fill(kNoNumber);
    line.kept.assign(times_.size(), kNoNumber);
    begin_step(line);
  }
  return place->second;
}

void ThinnedSamples::begin_step(Line& line) const {
  line.low = line.high = line.now;
  line.low_at = line.high_at = 0;
  line.has_gap = std::isnan(line.now);
}

void ThinnedSamples::take(Line& line, double number) const {
  line.now = number;
  if (count_ == 0) {
    begin_step(line);
  } else if (std::isnan(number)) {
    line.has_gap = true;
  } else {
    if (!(line.low <= number)) {
      line.low = number;
      line.low_at = count_;
    }
    if (!(line.high >= number)) {
      line.high = number;
      line.high_at = count_;
    }
  }
}

std::array<double, ThinnedSamples::kMost> ThinnedSamples::kept_of(const Line& line) const {
  if (count_ <= kMost) {
    return line.first;
  }
  const bool low_first = line.low_at <= line.high_at;
  return {low_first ? line.low : line.high, low_first ? line.high : line.low,
          line.has_gap ? kNoNumber : line.now};
}

void ThinnedSamples::end_step() {
  is_thinned_ = is_thinned_ || count_ > kMost;
  const size_t kept = std::min(count_, kMost);
  for (auto& [id, line] : lines_) {
    const auto numbers = kept_of(line);
    line.kept.insert(line.kept.end(), numbers.begin(), numbers.begin() + kept);
    begin_step(line);
  }
  if (count_ > kMost) {
    first_times_ = {first_times_[0], (first_times_[0] + last_time_) / 2, last_time_};
  }
  times_.insert(times_.end(), first_times_.begin(), first_times_.begin() + kept);
  count_ = 0;
}

void ThinnedSamples::add(double time, const std::vector<std::pair<uint32_t, double>>& numbers) {
  if (count_ > 0 && time >= begin_ + step_) {
    end_step();
  }
  if (count_ == 0) {
    begin_ = time;
  }
  for (const auto& [id, number] : numbers) {
    take(line(id), number);
  }
  if (count_ < kMost) {
    for (auto& [id, line] : lines_) {
      line.first[count_] = line.now;
    }
    first_times_[count_] = time;
  }
  last_time_ = time;
  ++count_;
}

RecentSamples::Extract ThinnedSamples::extract() const {
  ThinnedSamples whole = *this;
  whole.end_step();
  RecentSamples::Extract result;
  result.times = std::move(whole.times_);
  for (auto& [id, line] : whole.lines_) {
    if (!std::all_of(line.kept.begin(), line.kept.end(), [](double n) { return std::isnan(n); })) {
      result.series.emplace(id, std::move(line.kept));
    }
  }
  return result;
}

}  // namespace kova_page
