// Aligned tables of items, in the manner of hardware-monitoring tools.
#include "tools/kovactl/table.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "tools/host/plain_text.h"
#include "tools/host/value_text.h"

namespace kovactl {
namespace {

constexpr size_t kColumns = 5;
using Cells = std::array<std::string, kColumns>;
const Cells kTitles = {"ID", "NAME", "VALUE", "RANGE", "ACCESS"};

struct Row {
  Cells cells;
  Style value_style = Style::plain;
  bool alarm = false;
};

Row row_of(const Item& item, const Reading& reading) {
  Row row;
  row.cells = {id_text(item.id), printable(item.name), value_with_unit(item, reading),
               range_text(item), printable(item.access)};
  row.alarm = out_of_range(item, reading);
  if (row.alarm) {
    row.value_style = Style::alarm;
  } else if (reading.state != Reading::State::good) {
    row.value_style = Style::unreadable;
  }
  return row;
}

using Widths = std::array<size_t, kColumns>;

void widen(Widths& widths, const Cells& cells) {
  for (size_t i = 0; i < kColumns; ++i) {
    widths[i] = std::max(widths[i], display_width(cells[i]));
  }
}

std::string line_of(const Row& row, const Widths& widths, const Painter& paint) {
  constexpr size_t kValue = 2;
  std::string line = " ";
  for (size_t i = 0; i < kColumns; ++i) {
    // Nothing is filled up behind the last cell, so that lines end where their text does.
    const bool last = i + 1 == kColumns;
    const std::string cell = last ? row.cells[i] : padded(row.cells[i], widths[i]);
    line += ' ' + paint(i == kValue ? row.value_style : Style::plain, cell) + (last ? "" : " ");
  }
  if (row.alarm) {
    line += "  " + paint(Style::alarm, "OUT OF RANGE");
  }
  return line + '\n';
}

std::string heading_of(const Item& item) {
  return item.family == item.package ? printable(item.family)
                                     : printable(item.family + ": " + item.package);
}

}  // namespace

std::string item_table(const std::vector<Item>& items, const Readings& readings,
                       const Painter& paint) {
  std::vector<Row> rows;
  Widths widths{};
  widen(widths, kTitles);
  for (const Item& item : items) {
    rows.push_back(row_of(item, readings.at(item.id)));
    // The reason of a failure goes over the columns behind it and widens none.
    Cells cells = rows.back().cells;
    if (readings.at(item.id).state == Reading::State::failed) {
      cells[2].clear();
    }
    widen(widths, cells);
  }
  std::string text = line_of({kTitles}, widths, Painter(false));
  text.pop_back();
  text = paint(Style::faint, text) + '\n';
  std::string previous;
  for (size_t i = 0; i < items.size(); ++i) {
    const std::string heading = heading_of(items[i]);
    if (heading != previous) {
      text += '\n' + paint(Style::heading, heading) + '\n';
      previous = heading;
    }
    text += line_of(rows[i], widths, paint);
  }
  return text;
}

}  // namespace kovactl
