// How `kovactl watch` shows its samples.
#pragma once

#include <deque>
#include <map>
#include <string>
#include <vector>

#include "tools/host/reading.h"
#include "tools/kovactl/terminal.h"

namespace kovactl {

using namespace kova_host;

// One line a sample, for pipes and logs: the UTC time, then "0x14140201=48.2" for each item,
// separated by tabs.
std::string sample_line(const std::vector<Item>& items, const Readings& readings);

// One line of JSON a sample: as `list --json`, without what never changes, and with "time", the
// seconds since the Unix epoch.
std::string sample_json(const std::vector<Item>& items, const Readings& readings);

// A table that stands still on a terminal while its values change.
class WatchView {
 public:
  WatchView(std::vector<Item> items, const Painter& paint, bool utf8);
  // Gives the terminal its cursor and line wrapping back.
  ~WatchView();
  WatchView(const WatchView&) = delete;
  WatchView& operator=(const WatchView&) = delete;

  // Draws the sample over the one before; of a table with more lines than `rows`, the first ones.
  void show(const Readings& readings, size_t rows);

  // The lines of a sample, each without its line feed.
  std::vector<std::string> lines(const Readings& readings, size_t rows);

 private:
  struct Track {
    std::string text;  // the value as shown last
    bool changed = false;
    std::deque<std::optional<double>> recent;
  };
  void follow(const Readings& readings);
  std::string line_of(const Item& item, const Reading& reading) const;

  std::vector<Item> items_;
  Painter paint_;
  bool utf8_;
  size_t name_width_ = 0;
  size_t value_width_ = 0;
  size_t samples_ = 0;
  size_t drawn_lines_ = 0;
  std::map<uint32_t, Track> tracks_;
};

}  // namespace kovactl
