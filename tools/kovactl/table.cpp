// Aligned tables of items, in the manner of hardware-monitoring tools.
#include "tools/kovactl/table.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <limits>

#include "tools/host/judgements/judge.h"
#include "tools/host/system/plain_text.h"
#include "tools/host/values/shown_value.h"
#include "tools/kovactl/row_layout.h"

namespace kovactl {

using namespace kova_host;
namespace {

enum Column : size_t { kId, kName, kValue, kRange, kAccess, kColumns };
using Cells = std::array<std::string, kColumns>;
const Cells kTitles = {"ID", "NAME", "VALUE", "RANGE", "ACCESS"};
constexpr size_t kIndent = 2;

struct Row {
  Cells cells;
  Style value_style = Style::plain;
  std::string alarm = {};  // behind everything else
  bool failed = false;     // the reason stands in the value's place and all behind it
};

Row row_of(const Item& item, const Reading& reading, const std::vector<Finding>& findings) {
  Row row;
  row.cells = {id_text(item.id), printable(item.name),
               std::string(without_trailing_blanks(value_with_unit(item, reading))),
               range_text(item), printable(item.access)};
  row.failed = reading.state == Reading::State::failed;
  if (const std::string marks = marks_on(item.id, findings); !marks.empty()) {
    row.value_style = Style::alarm;
    row.alarm = "  " + marks;
  } else if (reading.state != Reading::State::good) {
    row.value_style = Style::unreadable;
  }
  return row;
}

// The table's columns on a terminal so wide, and the rows in them.
class Frame {
 public:
  Frame(const std::vector<Row>& rows, size_t width, const Painter& paint);

  std::string line(const Row& row) const;

 private:
  bool fits(const std::vector<Row>& rows) const;
  size_t width_of(const Row& row) const;
  std::string aligned(const Row& row) const;
  std::string fitted(const Row& row) const;

  size_t width_;
  Painter paint_;
  std::array<size_t, kColumns> widths_{};
  std::vector<Column> columns_ = {kId, kName, kValue, kRange, kAccess};
  bool aligned_ = true;  // false if even ID, name and value are too wide for columns
  std::optional<RowLayout> layout_;
};

Frame::Frame(const std::vector<Row>& rows, size_t width, const Painter& paint)
    : width_(width), paint_(paint) {
  for (const Row& row : rows) {
    for (size_t i = 0; i < kColumns; ++i) {
      const bool counts = !row.failed || i < kValue;
      widths_[i] = std::max(widths_[i], counts ? display_width(row.cells[i]) : 0);
    }
  }
  for (const Column column : {kRange, kAccess}) {
    if (!fits(rows)) {
      columns_.erase(std::find(columns_.begin(), columns_.end(), column));
    }
  }
  aligned_ = fits(rows);
  layout_.emplace(widths_[kName], widths_[kValue], width_ - kIndent);
}

bool Frame::fits(const std::vector<Row>& rows) const {
  return std::all_of(rows.begin(), rows.end(),
                     [this](const Row& row) { return row.failed || width_of(row) <= width_; });
}

size_t Frame::width_of(const Row& row) const {
  size_t width = kIndent + row.alarm.size();
  for (const Column column : columns_) {
    const bool last = column == columns_.back();
    width += last ? display_width(row.cells[column]) : widths_[column] + 2;
  }
  return width;
}

std::string Frame::aligned(const Row& row) const {
  std::string line;
  for (const Column column : columns_) {
    // Nothing is filled up behind the last cell, so that lines end where their text does.
    const bool last = column == columns_.back();
    const std::string cell = last ? row.cells[column] : padded(row.cells[column], widths_[column]);
    line += paint_(column == kValue ? row.value_style : Style::plain, cell) + (last ? "" : "  ");
  }
  return line + paint_(row.value_style, row.alarm);
}

std::string Frame::fitted(const Row& row) const {
  const std::string value = row.cells[kValue] + row.alarm;
  return layout_->before_value(row.cells[kId], row.cells[kName], display_width(value)) +
         paint_(row.value_style, value);
}

std::string Frame::line(const Row& row) const {
  return std::string(kIndent, ' ') + (aligned_ && !row.failed ? aligned(row) : fitted(row));
}

std::string heading_of(const Item& item, size_t width) {
  const std::string heading = item.family == item.package
                                  ? printable(item.family)
                                  : printable(item.family + ": " + item.package);
  return shortened(heading, width);
}

}  // namespace

std::string item_table(const std::vector<Item>& items, const Readings& readings,
                       const std::vector<Finding>& findings, const Painter& paint,
                       std::optional<size_t> terminal_width) {
  const Row titles = {kTitles};
  std::vector<Row> rows = {titles};
  for (const Item& item : items) {
    rows.push_back(row_of(item, readings.at(item.id), findings));
  }
  const size_t width = terminal_width.value_or(std::numeric_limits<size_t>::max());
  const Frame frame(rows, width, paint);
  std::string text = paint(Style::faint, frame.line(titles)) + '\n';
  std::string previous;
  for (size_t i = 0; i < items.size(); ++i) {
    const std::string heading = heading_of(items[i], width);
    if (heading != previous) {
      text += '\n' + paint(Style::heading, heading) + '\n';
      previous = heading;
    }
    text += frame.line(rows[i + 1]) + '\n';
  }
  return text;
}

}  // namespace kovactl
