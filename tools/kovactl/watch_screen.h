// `kovactl watch` on a terminal: a table that stands still while its values change, on ncurses.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/host/session/worker_link.h"
#include "tools/kovactl/row_layout.h"
#include "tools/kovactl/sample_text.h"
#include "tools/kovactl/watch_history.h"
#include "tools/kovactl/watch_list.h"

struct screen;  // ncurses' own

namespace kovactl {

class WatchScreen {
 public:
  // Takes the terminal on stdin and stdout over; null if ncurses does not know its type.
  static std::unique_ptr<WatchScreen> open(std::vector<kova_host::Item> items, bool changed_only);
  // Gives the terminal back.
  ~WatchScreen();
  WatchScreen(const WatchScreen&) = delete;
  WatchScreen& operator=(const WatchScreen&) = delete;

  void show(const Sample& sample);

  // Answers what was typed and a new size of the terminal, and draws: to call now and then, since
  // it also shows how long the device has been taking.
  void answer(const std::optional<kova_host::CallUnderWay>& call = std::nullopt);

  bool wants_to_quit() const { return quit_; }
  bool paused() const { return paused_; }

  // The rows on the screen as text, which may stay on the terminal after this.
  std::string rows_as_text() const;

 private:
  WatchScreen(screen* terminal, bool utf8, std::vector<kova_host::Item> items, bool changed_only);

  void answer_key(int key);
  void answer_scroll_key(int key);
  void answer_search_key(int key);
  void find(int step);

  void draw();
  void draw_row(int line, const kova_host::Item& item, const RowLayout& layout, int columns) const;
  void draw_bars(int column, const WatchHistory::Track& track, int columns) const;
  void write(std::string_view text, Style style) const;
  RowLayout layout(int columns) const;
  std::string status() const;
  std::string footer() const;

  screen* terminal_;
  std::optional<kova_host::CallUnderWay> call_;  // that is waited for
  bool utf8_;
  bool coloured_;
  WatchList list_;
  WatchHistory history_;
  std::string time_;  // of the sample shown
  size_t name_width_ = 0;
  size_t value_width_ = 0;   // of the values so far
  size_t number_width_ = 0;  // of those that have bars
  bool paused_ = false;
  bool quit_ = false;
  bool typing_ = false;  // what to search for
  std::string wanted_;
  std::string note_;  // in the footer's place until the next key
};

}  // namespace kovactl
