// A family's rows with an index computed at compile time: which row an item ID is treated by.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "framework/item_id.h"
#include "framework/row.h"
#include "framework/row_check.h"

namespace catalogue {

/// The IDs first..end-1.
struct Ids {
  unsigned int first = 0;
  unsigned int end = 0;

  [[nodiscard]] constexpr bool holds(unsigned int id) const { return first <= id && id < end; }
};

/// The IDs from the first to the last published item that a heading leads. They are read one after
/// the other, so a gap among them does not compile.
consteval Ids items_under(std::span<const Row> rows, unsigned int heading) {
  Ids ids;
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

/// What a family with a table can do, by the IDs of headings; 0 for none.
struct Abilities {
  unsigned int texts = 0;         ///< leads the texts, which are read together
  unsigned int settings = 0;      ///< leads what can be written
  unsigned int written_from = 0;  ///< leads the IDs that settings are written at, by their index
};

/// Rows of one family in ascending order of their IDs, of groups 0x00 to 0x0F, the presence item
/// first. Rows that contradict each other, or that the family cannot obey, do not compile.
class RowTable {
 public:
  explicit consteval RowTable(std::span<const Row> rows, Abilities can = {})
      : rows_(rows),
        base_(rows.front().id & ~kKeyMask),
        texts_(can.texts != 0 ? items_under(rows, can.texts) : Ids{}) {
    check(can);
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

  /// The items that are texts.
  [[nodiscard]] constexpr Ids texts() const { return texts_; }

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

  consteval void check(const Abilities& can) const {
    if (rows_.size() >= kNone) {
      throw "too many rows for the index";
    }
    for (std::size_t at = 1; at < rows_.size(); ++at) {
      if (rows_[at - 1].id >= rows_[at].id) {
        throw "the rows are not in ascending order of their IDs";
      }
    }
    for (const Row& row : rows_) {
      check_row(row);
      check_one_word(row);
      check_ability(row, can);
    }
  }

  consteval void check_ability(const Row& row, const Abilities& can) const {
    const bool is_text = is_published(row) && row.as.kind == Kind::kText;
    if (is_text != (row.text != nullptr)) {
      throw "a text item without its function, or another item with one";
    }
    if (is_published(row) && is_text != texts_.holds(row.id)) {
      throw "a text outside the group of the texts, or another item in it";
    }
    if (row.as.through_text) {
      throw "through its text, in a family whose numbers have none";
    }
    if (!takes_writes(row)) {
      return;
    }
    if (can.settings == 0 || item_id::group(row.id) != can.settings) {
      throw "a setting outside the group that takes writes";
    }
    const unsigned int target =
        can.written_from != 0 ? can.written_from + item_id::index(row.id) : 0;
    if (is_published(row) && row.written_at != target) {
      throw "a setting that is not written where its family's are (column `written_at`)";
    }
  }

  static constexpr unsigned int key(unsigned int id) { return id & kKeyMask; }

  std::span<const Row> rows_;
  unsigned int base_;  // bits 31..12 of the IDs
  Ids texts_;
  std::array<std::uint8_t, kKeyMask + 1> places_{};
};

}  // namespace catalogue
