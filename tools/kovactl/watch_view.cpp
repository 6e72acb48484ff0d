// How `kovactl watch` shows its samples.
#include "tools/kovactl/watch_view.h"

#include <fmt/chrono.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <utility>

#include "tools/host/json_report.h"
#include "tools/host/json_writer.h"
#include "tools/host/plain_text.h"
#include "tools/host/unix_time.h"
#include "tools/host/value_text.h"
#include "tools/kovactl/output.h"
#include "tools/kovactl/sparkline.h"
#include "tools/kovactl/terminal.h"

namespace kovactl {
namespace {

constexpr size_t kRecent = 16;

// A long line must not wrap: the next sample would be drawn in the wrong rows.
constexpr std::string_view kHideCursorAndCutLines = "\x1b[?25l\x1b[?7l";
constexpr std::string_view kShowCursorAndWrapLines = "\x1b[?7h\x1b[?25h";

std::string utc_now(const char* format) {
  const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
  return fmt::format(fmt::runtime(format), fmt::gmtime(now));
}

}  // namespace

std::string sample_line(const std::vector<Item>& items, const Readings& readings) {
  std::string line = utc_now("{:%Y-%m-%dT%H:%M:%SZ}");
  for (const Item& item : items) {
    line += fmt::format("\t{}={}", id_text(item.id), plain_value(readings.at(item.id)));
  }
  return line + '\n';
}

std::string sample_json(const std::vector<Item>& items, const Readings& readings) {
  JsonPtr sample = json_items(items, readings, Detail::brief);
  put(sample, "time", own(json_real(unix_time())));
  return json_document(sample.get(), JsonLayout::one_line);
}

WatchView::WatchView(std::vector<Item> items, const Painter& paint, bool utf8)
    : items_(std::move(items)), paint_(paint), utf8_(utf8) {
  for (const Item& item : items_) {
    name_width_ = std::max(name_width_, display_width(printable(item.name)));
  }
}

WatchView::~WatchView() {
  if (drawn_lines_ > 0) {
    write_if_possible(STDOUT_FILENO, kShowCursorAndWrapLines);
  }
}

void WatchView::follow(const Readings& readings) {
  ++samples_;
  for (const Item& item : items_) {
    const Reading& reading = readings.at(item.id);
    Track& track = tracks_[item.id];
    std::string text = value_with_unit(item, reading);
    track.changed = samples_ > 1 && text != track.text;
    track.text = std::move(text);
    track.recent.push_back(reading.number());
    if (track.recent.size() > kRecent) {
      track.recent.pop_front();
    }
    value_width_ = std::max(value_width_, display_width(track.text));
  }
}

std::string WatchView::line_of(const Item& item, const Reading& reading) const {
  const Track& track = tracks_.at(item.id);
  Style style = track.changed ? Style::changed : Style::plain;
  if (reading.state != Reading::State::good) {
    style = Style::unreadable;
  } else if (out_of_range(item, reading)) {
    style = Style::alarm;
  }
  // Blanks go outside the colour, which would show on them.
  const std::string filler(value_width_ - display_width(track.text), ' ');
  const bool numeric = std::any_of(track.recent.begin(), track.recent.end(),
                                   [](const auto& value) { return value.has_value(); });
  return fmt::format("{}  {}  {} {}{}  {}", id_text(item.id),
                     padded(printable(item.name), name_width_), track.changed ? '*' : ' ',
                     paint_(style, track.text), filler,
                     numeric ? sparkline(track.recent, utf8_) : "");
}

std::vector<std::string> WatchView::lines(const Readings& readings, size_t rows) {
  follow(readings);
  std::vector<std::string> result;
  result.push_back(paint_(Style::faint, fmt::format("sample {} at {} UTC, * changed, Ctrl-C ends",
                                                    samples_, utc_now("{:%H:%M:%S}"))));
  // One row for the title, one for the note on what is missing, one for the cursor.
  const bool fits = items_.size() + 2 <= rows;
  const size_t shown = fits ? items_.size() : std::max<size_t>(rows, 4) - 3;
  for (size_t i = 0; i < shown; ++i) {
    result.push_back(line_of(items_[i], readings.at(items_[i].id)));
  }
  if (!fits) {
    result.push_back(paint_(Style::faint, fmt::format("{} more do not fit: name the IDs to watch",
                                                      items_.size() - shown)));
  }
  return result;
}

void WatchView::show(const Readings& readings, size_t rows) {
  const std::vector<std::string> now = lines(readings, rows);
  std::string text = drawn_lines_ == 0 ? std::string(kHideCursorAndCutLines)
                                       : fmt::format("\x1b[{}A", drawn_lines_);
  for (const std::string& line : now) {
    text += fmt::format("\r{}{}\n", line, kEraseToEndOfLine);
  }
  text += "\x1b[J";  // a taller frame may have stood here
  drawn_lines_ = now.size();
  print(text);
}

}  // namespace kovactl
