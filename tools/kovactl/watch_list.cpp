// The part of a long list of items that a watch shows: filter, scrolling, search.
#include "tools/kovactl/watch_list.h"
#include "tools/host/system/typed_number.h"

#include <algorithm>
#include <utility>

namespace kovactl {

using namespace kova_host;
namespace {

bool contains_word(std::string_view text, std::string_view word) {
  for (size_t i = 0; i + word.size() <= text.size(); ++i) {
    if (same_word(text.substr(i, word.size()), word)) {
      return true;
    }
  }
  return false;
}

bool matches(const Item& item, std::string_view text) {
  return contains_word(item.name, text) || contains_word(id_text(item.id), text) ||
         contains_word(item.package, text) || contains_word(item.family, text);
}

}  // namespace

WatchList::WatchList(std::vector<Item> items, bool changed_only)
    : items_(std::move(items)), changed_only_(changed_only) {}

void WatchList::update(const WatchHistory& history) {
  rows_.clear();
  for (const Item& item : items_) {
    if (!changed_only_ || history.changed_lately(item)) {
      rows_.push_back(&item);
    }
  }
  scroll(0);
}

void WatchList::show_changed_only(bool only, const WatchHistory& history) {
  changed_only_ = only;
  top_ = 0;
  update(history);
}

void WatchList::set_room(size_t rows) {
  room_ = std::max<size_t>(rows, 1);
  scroll(0);
}

std::span<const Item* const> WatchList::visible() const {
  return std::span(rows_).subspan(top_, std::min(room_, rows_.size() - top_));
}

void WatchList::scroll(ptrdiff_t rows) {
  const auto last_top = static_cast<ptrdiff_t>(rows_.size() - std::min(room_, rows_.size()));
  top_ =
      static_cast<size_t>(std::clamp<ptrdiff_t>(static_cast<ptrdiff_t>(top_) + rows, 0, last_top));
}

void WatchList::turn_page(ptrdiff_t pages) {
  scroll(pages * static_cast<ptrdiff_t>(room_));
}

bool WatchList::find(std::string_view text, int step) {
  const size_t count = rows_.size();
  const auto marked = std::find(rows_.begin(), rows_.end(), marked_);
  const bool fresh = marked == rows_.end();
  size_t row = fresh ? top_ : static_cast<size_t>(marked - rows_.begin());
  if (step != 0 && !fresh) {
    row = (row + count + static_cast<size_t>(step)) % count;
  }
  for (size_t tried = 0; tried < count; ++tried) {
    if (matches(*rows_[row], text)) {
      marked_ = rows_[row];
      scroll(static_cast<ptrdiff_t>(row) - static_cast<ptrdiff_t>(top_ + room_ / 2));
      return true;
    }
    row = (row + count + static_cast<size_t>(step < 0 ? -1 : 1)) % count;
  }
  return false;
}

}  // namespace kovactl
