// The part of a long list of items that a watch shows: filter, scrolling, search.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tools/kovactl/watch_history.h"

namespace kovactl {

class WatchList {
 public:
  WatchList(std::vector<kova_host::Item> items, bool changed_only);

  const std::vector<kova_host::Item>& items() const { return items_; }

  // To call after each sample: what has changed lately is another matter then.
  void update(const WatchHistory& history);

  void show_changed_only(bool only, const WatchHistory& history);
  bool changed_only() const { return changed_only_; }

  // Rows that the terminal has for it.
  void set_room(size_t rows);

  // What is to be seen, and where it stands in `size()` rows.
  std::span<const kova_host::Item* const> visible() const;
  size_t top() const { return top_; }
  size_t size() const { return rows_.size(); }

  // Both stop at the ends.
  void scroll(ptrdiff_t rows);
  void turn_page(ptrdiff_t pages);

  // Scrolls to an item with `text` in its name, ID, package or family, in any case, and marks it:
  // from the one marked or, before there is one, from the top, round the end if need be. `step` is
  // 1 for the next, -1 for the one before, 0 to stay if the marked one matches. False if there is
  // none.
  bool find(std::string_view text, int step);
  bool is_marked(const kova_host::Item& item) const { return &item == marked_; }

 private:
  std::vector<kova_host::Item> items_;
  bool changed_only_;
  std::vector<const kova_host::Item*> rows_;
  size_t top_ = 0;
  size_t room_ = 1;
  const kova_host::Item* marked_ = nullptr;
};

}  // namespace kovactl
