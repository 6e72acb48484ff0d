// How an item's ID, name and value share a row that is too narrow for columns of full width.
#include "tools/kovactl/row_layout.h"

#include <algorithm>

#include "tools/host/system/plain_text.h"

namespace kovactl {

using namespace kova_host;

using kova_host::padded;
using kova_host::shortened;
using kova_host::shortened_in_front;

namespace {

constexpr size_t kIdWidth = 10;       // "0x14140B01"
constexpr size_t kUsualValue = 20;    // rows with a longer one begin it further left
constexpr size_t kReadableName = 20;  // with less room, the ID gives way
constexpr size_t kLeastName = 8;

size_t difference(size_t from, size_t what) {
  return from - std::min(from, what);
}

}  // namespace

RowLayout::RowLayout(size_t name, size_t value, size_t width) : width_(width) {
  const size_t for_value = kGap + std::min({value, kUsualValue, width / 3});
  const size_t beside_id = difference(width, kIdWidth + kGap + for_value);
  id_width_ = beside_id >= std::min(name, kReadableName) ? kIdWidth + kGap : 0;
  name_ = std::min(name, std::max(kLeastName, difference(width, id_width_ + for_value)));
}

std::string RowLayout::before_value(std::string_view id, std::string_view name,
                                    size_t value_width) const {
  const size_t room = std::max(kLeastName, difference(width_, id_width_ + kGap + value_width));
  const std::string start = id_width_ == 0 ? "" : padded(id, id_width_);
  const bool is_path = name.find('/') != std::string_view::npos;
  const std::string shown = is_path ? shortened_in_front(name, room) : shortened(name, room);
  return start + padded(shown, std::min(name_, room)) + std::string(kGap, ' ');
}

}  // namespace kovactl
