// Where the values of a watch have been: what changed, and when.
#include "tools/kovactl/watch_history.h"

#include <algorithm>
#include <utility>

#include "tools/host/system/plain_text.h"
#include "tools/host/values/shown_value.h"

namespace kovactl {

using namespace kova_host;
namespace {

Style style_of(const Item& item, const Reading& reading, bool changed) {
  if (reading.state != Reading::State::good) {
    return Style::unreadable;
  }
  if (out_of_range(item, reading)) {
    return Style::alarm;
  }
  return changed ? Style::changed : Style::plain;
}

}  // namespace

bool WatchHistory::Track::is_numeric() const {
  return std::any_of(recent.begin(), recent.end(), [](const auto& v) { return v.has_value(); });
}

void WatchHistory::follow(const std::vector<Item>& items, const Readings& readings) {
  ++samples_;
  for (const Item& item : items) {
    const Reading& reading = readings.at(item.id);
    Track& track = tracks_[item.id];
    std::string text(without_trailing_blanks(value_with_unit(item, reading)));
    track.changed = samples_ > 1 && text != track.text;
    track.last_change = track.changed ? samples_ : track.last_change;
    track.text = std::move(text);
    track.style = style_of(item, reading, track.changed);
    track.recent.push_back(reading.number());
    if (track.recent.size() > kRecent) {
      track.recent.pop_front();
    }
  }
}

bool WatchHistory::changed_lately(const Item& item) const {
  const size_t last = track(item).last_change;
  return last > 0 && samples_ - last < kRecent;
}

}  // namespace kovactl
