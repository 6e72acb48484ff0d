// How an item's ID, name and value share a row that is too narrow for columns of full width.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kovactl {

class RowLayout {
 public:
  // `name` and `value` are the greatest widths in the table, `width` is that of a row.
  RowLayout(size_t name, size_t value, size_t width);

  // The row before the value: the ID if there is room for it, and the name. It ends in the column
  // where values stand, unless the name or the value needs some of the other's room; a name is cut
  // only for a value that would not fit otherwise, and a value never.
  std::string before_value(std::string_view id, std::string_view name, size_t value_width) const;

  size_t value_column() const { return id_width_ + name_ + kGap; }

 private:
  static constexpr size_t kGap = 2;

  size_t width_;
  size_t id_width_;  // with the gap behind it; 0 without IDs
  size_t name_;
};

}  // namespace kovactl
