// A family's rows with an index computed at compile time: which row an item ID is treated by.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "framework/item_id.h"
#include "framework/row.h"

namespace catalogue {

/// The IDs first..end-1.
struct Ids {
  unsigned int first;
  unsigned int end;
};

/// Rows of one family in ascending order of their IDs, of groups 0x00 to 0x0F. Rows that contradict
/// each other do not compile.
class RowTable {
 public:
  explicit consteval RowTable(std::span<const Row> rows)
      : rows_(rows), base_(rows.front().id & ~kKeyMask) {
    check(rows);
    places_.fill(kNone);
    for (std::size_t place = 0; place < rows.size(); ++place) {
      const unsigned int first = key(rows[place].id);
      const unsigned int end =
          leads_items(rows[place]) ? first + item_id::span(rows[place].id) : first;
      for (unsigned int at = first; at < end; ++at) {
        places_.at(at) = static_cast<std::uint8_t>(place);
      }
    }
    for (std::size_t place = 0; place < rows.size(); ++place) {
      if (rows[place].as.kind != Kind::kNone) {
        places_.at(key(rows[place].id)) = static_cast<std::uint8_t>(place);
      }
    }
  }

  [[nodiscard]] constexpr std::span<const Row> rows() const { return rows_; }

  /// The row by which the family treats `id`: its own, or that of the heading in whose block it
  /// lies. Null when no item of this kind is known.
  [[nodiscard]] constexpr const Row* find(unsigned int id) const {
    const bool in_reach = (id & ~kKeyMask) == base_;
    const std::uint8_t place = in_reach ? places_[key(id)] : kNone;
    return place != kNone ? &rows_[place] : nullptr;
  }

 private:
  static constexpr unsigned int kKeyMask = 0xFFF;
  static constexpr std::uint8_t kNone = 0xFF;

  static consteval void check(std::span<const Row> rows) {
    if (rows.size() >= kNone) {
      throw "too many rows for the index";
    }
    for (std::size_t at = 1; at < rows.size(); ++at) {
      if (rows[at - 1].id >= rows[at].id) {
        throw "the rows are not in ascending order of their IDs";
      }
    }
    for (const Row& row : rows) {
      if (is_published(row) && (row.as.kind == Kind::kText) != (row.text != nullptr)) {
        throw "a text item without its function, or another item with one";
      }
    }
  }

  static constexpr unsigned int key(unsigned int id) { return id & kKeyMask; }

  std::span<const Row> rows_;
  unsigned int base_;  // bits 31..12 of the IDs
  std::array<std::uint8_t, kKeyMask + 1> places_{};
};

/// The IDs from the first to the last published item that a heading leads. They are read one after
/// the other, so a gap among them does not compile.
consteval Ids items_under(std::span<const Row> rows, unsigned int heading) {
  Ids ids{.first = 0, .end = 0};
  for (const Row& row : rows) {
    if (!is_led_by(row, heading)) {
      continue;
    }
    if (ids.end != 0 && row.id != ids.end) {
      throw "the items of a group have a gap among their IDs";
    }
    ids.first = ids.end == 0 ? row.id : ids.first;
    ids.end = row.id + 1;
  }
  if (ids.end == 0) {
    throw "a group has no items";
  }
  return ids;
}

}  // namespace catalogue
