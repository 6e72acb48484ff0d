// Where the values of a watch have been: what changed, and when.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tools/host/values/reading.h"
#include "tools/kovactl/terminal.h"

namespace kovactl {

class WatchHistory {
 public:
  static constexpr size_t kRecent = 16;  // samples

  struct Track {
    std::string text;  // the value as shown, with its unit
    Style style = Style::plain;
    bool changed = false;    // since the sample before
    size_t last_change = 0;  // number of the sample; 0 for never
    std::deque<std::optional<double>> recent;

    // True if the value has been a number lately.
    bool is_numeric() const;
  };

  void follow(const std::vector<kova_host::Item>& items, const kova_host::Readings& readings);

  // Samples so far.
  size_t samples() const { return samples_; }

  // Of an item that was followed.
  const Track& track(const kova_host::Item& item) const { return tracks_.at(item.id); }

  bool changed_lately(const kova_host::Item& item) const;

 private:
  size_t samples_ = 0;
  std::map<uint32_t, Track> tracks_;
};

}  // namespace kovactl
