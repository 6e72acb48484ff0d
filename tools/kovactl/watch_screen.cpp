// `kovactl watch` on a terminal: a table that stands still while its values change, on ncurses.
#include "tools/kovactl/watch_screen.h"

#include <fmt/chrono.h>
#include <fmt/format.h>
#include <langinfo.h>
#include <unistd.h>

#include <algorithm>
#include <clocale>
#include <cstring>
#include <utility>

#include "tools/host/system/plain_text.h"
#include "tools/kovactl/sparkline.h"
#include "tools/kovactl/terminal_type.h"

// Without its macros, some of which have names such as "erase" and "timeout".
#define NCURSES_NOMACROS 1
#include <curses.h>

namespace kovactl {

using namespace kova_host;
namespace {

constexpr size_t kMarkWidth = 2;     // "* " before a value
constexpr size_t kUsualNumber = 14;  // longer ones, with labels, have no bars behind them
constexpr size_t kLeastBars = 8;
constexpr int kEscape = 27;
constexpr int kRubout = 127;

// ncurses counts columns in the locale's encoding. It alone gets to know the user's locale: numbers
// and dates stay as they are.
bool use_locale_for_utf8() {
  // NOLINTBEGIN(concurrency-mt-unsafe): no other thread of this program looks at the locale
  if (std::setlocale(LC_CTYPE, "") == nullptr && prefers_utf8()) {
    std::setlocale(LC_CTYPE, "C.UTF-8");  // the user's own is not installed here
  }
  return std::strcmp(nl_langinfo(CODESET), "UTF-8") == 0;
  // NOLINTEND(concurrency-mt-unsafe)
}

short pair_of(Style style) {
  switch (style) {
    case Style::unreadable:
      return 1;
    case Style::alarm:
      return 2;
    default:
      return 0;
  }
}

bool use_colours() {
  if (!Painter::for_stdout().paints() || !has_colors() || start_color() == ERR) {
    return false;
  }
  use_default_colors();
  init_pair(pair_of(Style::unreadable), COLOR_YELLOW, -1);
  init_pair(pair_of(Style::alarm), COLOR_RED, -1);
  return true;
}

attr_t attributes_of(Style style) {
  switch (style) {
    case Style::heading:
    case Style::alarm:
      return A_BOLD;
    case Style::faint:
      return A_DIM;
    case Style::changed:
      return A_REVERSE;
    default:
      return A_NORMAL;
  }
}

char mark_of(const WatchHistory::Track& track) {
  if (track.style == Style::alarm) {
    return '!';
  }
  return track.changed ? '*' : ' ';
}

}  // namespace

std::unique_ptr<WatchScreen> WatchScreen::open(std::vector<Item> items, bool changed_only) {
  const bool utf8 = use_locale_for_utf8();
  // newterm() finds that out too, and leaks what it has taken until then.
  if (!is_known_terminal_type()) {
    return nullptr;
  }
  SCREEN* terminal = newterm(nullptr, stdout, stdin);
  if (terminal == nullptr) {
    return nullptr;
  }
  return std::unique_ptr<WatchScreen>(
      new WatchScreen(terminal, utf8, std::move(items), changed_only));
}

WatchScreen::WatchScreen(SCREEN* terminal, bool utf8, std::vector<Item> items, bool changed_only)
    : terminal_(terminal),
      utf8_(utf8),
      coloured_(use_colours()),
      list_(std::move(items), changed_only) {
  for (const Item& item : list_.items()) {
    name_width_ = std::max(name_width_, display_width(printable(name_or_path(item))));
  }
  cbreak();
  noecho();
  nodelay(stdscr, TRUE);
  keypad(stdscr, TRUE);
  set_escdelay(25);
  curs_set(0);
}

WatchScreen::~WatchScreen() {
  endwin();
  delscreen(terminal_);
}

void WatchScreen::show(const Sample& sample) {
  history_.follow(list_.items(), sample.readings);
  list_.update(history_);
  for (const Item& item : list_.items()) {
    const WatchHistory::Track& track = history_.track(item);
    const size_t width = display_width(track.text);
    value_width_ = std::max(value_width_, width);
    if (track.is_numeric()) {
      number_width_ = std::max(number_width_, std::min(width, kUsualNumber));
    }
  }
  time_ =
      fmt::format("{:%H:%M:%S}", fmt::gmtime(std::chrono::system_clock::to_time_t(sample.taken)));
  answer();
}

void WatchScreen::answer(const std::optional<CallUnderWay>& call) {
  call_ = call;
  for (int key = getch(); key != ERR; key = getch()) {
    answer_key(key);
  }
  draw();
}

void WatchScreen::answer_key(int key) {
  note_.clear();
  if (key == KEY_RESIZE) {
    clear();  // whatever the terminal made of the old rows
  } else if (typing_) {
    answer_search_key(key);
  } else if (key == 'q' || key == 'Q') {
    quit_ = true;
  } else if (key == ' ') {
    paused_ = !paused_;
  } else if (key == 'c') {
    list_.show_changed_only(!list_.changed_only(), history_);
  } else if (key == '/') {
    typing_ = true;
    wanted_.clear();
  } else if (key == 'n' || key == 'N') {
    find(key == 'n' ? 1 : -1);
  } else {
    answer_scroll_key(key);
  }
}

void WatchScreen::answer_scroll_key(int key) {
  const auto all = static_cast<ptrdiff_t>(list_.size());
  switch (key) {
    case KEY_UP:
    case 'k':
      return list_.scroll(-1);
    case KEY_DOWN:
    case 'j':
      return list_.scroll(1);
    case KEY_PPAGE:
      return list_.turn_page(-1);
    case KEY_NPAGE:
      return list_.turn_page(1);
    case KEY_HOME:
      return list_.scroll(-all);
    case KEY_END:
      return list_.scroll(all);
    default:
      note_ =
          "arrow and page keys scroll, / searches, n next, c changed only, space pauses, q quits";
  }
}

void WatchScreen::answer_search_key(int key) {
  if (key == '\n' || key == '\r' || key == KEY_ENTER) {
    typing_ = false;
  } else if (key == kEscape) {
    typing_ = false;
    wanted_.clear();
  } else if (key == KEY_BACKSPACE || key == kRubout || key == '\b') {
    wanted_ = wanted_.substr(0, wanted_.size() - std::min<size_t>(wanted_.size(), 1));
  } else if (key >= ' ' && key < kRubout) {
    wanted_ += static_cast<char>(key);
    find(0);
  }
}

void WatchScreen::find(int step) {
  if (wanted_.empty()) {
    note_ = "nothing to search for yet: /";
  } else if (!list_.find(wanted_, step)) {
    note_ = fmt::format("no item with '{}'", wanted_);
  }
}

RowLayout WatchScreen::layout(int columns) const {
  const auto width = static_cast<size_t>(columns);
  const size_t bars = 2 + kLeastBars;
  // Bars are for terminals that have room for everything else.
  const size_t for_values = kMarkWidth + value_width_;
  return {name_width_, for_values, width >= 60 ? width - bars : width};
}

void WatchScreen::draw() {
  erase();
  const int lines = getmaxy(stdscr);
  const int columns = getmaxx(stdscr);
  list_.set_room(static_cast<size_t>(std::max(lines - 2, 1)));
  move(0, 0);
  write(shortened(status(), static_cast<size_t>(columns)), Style::faint);
  int line = 1;
  const RowLayout row_layout = layout(columns);
  for (const Item* item : list_.visible()) {
    draw_row(line++, *item, row_layout, columns);
  }
  if (lines > 2) {
    move(lines - 1, 0);
    // The last column of the last line would scroll some terminals.
    write(shortened(footer(), static_cast<size_t>(columns - 1)), Style::faint);
  }
  refresh();
}

void WatchScreen::draw_row(int line, const Item& item, const RowLayout& layout, int columns) const {
  const WatchHistory::Track& track = history_.track(item);
  const std::string start = layout.before_value(id_text(item.id), printable(name_or_path(item)),
                                                kMarkWidth + display_width(track.text));
  move(line, 0);
  write(start, list_.is_marked(item) ? Style::heading : Style::plain);
  write(fmt::format("{} ", mark_of(track)), Style::plain);
  const int column = getcurx(stdscr);
  write(shortened(track.text, static_cast<size_t>(std::max(columns - column, 1))), track.style);
  const size_t bars = layout.value_column() + kMarkWidth + number_width_ + 2;
  if (track.is_numeric() && getcurx(stdscr) < static_cast<int>(bars) - 1) {
    draw_bars(static_cast<int>(bars), track, columns);
  }
}

void WatchScreen::draw_bars(int column, const WatchHistory::Track& track, int columns) const {
  const size_t room = static_cast<size_t>(std::max(columns - column, 0));
  if (room < kLeastBars) {
    return;
  }
  auto shown = track.recent;
  while (shown.size() > room) {
    shown.pop_front();
  }
  move(getcury(stdscr), column);
  write(sparkline(shown, utf8_), Style::plain);
}

void WatchScreen::write(std::string_view text, Style style) const {
  std::string shown(text);
  if (!utf8_) {
    std::replace_if(
        shown.begin(), shown.end(), [](char c) { return static_cast<signed char>(c) < 0; }, '?');
  }
  if (coloured_) {
    attr_set(attributes_of(style), pair_of(style), nullptr);
  }
  addstr(shown.c_str());
  attr_set(A_NORMAL, 0, nullptr);
}

std::string WatchScreen::status() const {
  using std::chrono::duration_cast, std::chrono::seconds, std::chrono::steady_clock;
  const auto waited =
      call_ ? duration_cast<seconds>(steady_clock::now() - call_->since) : seconds(0);
  if (waited >= seconds(1)) {
    return fmt::format("waiting for {}, {} s", subject_text(call_->subject), waited.count());
  }
  if (history_.samples() == 0) {
    return fmt::format("reading {} items", list_.items().size());
  }
  return fmt::format("sample {} at {} UTC, {}", history_.samples(), time_,
                     paused_ ? "paused" : "* changed, ! out of range");
}

std::string WatchScreen::footer() const {
  if (typing_) {
    return fmt::format("/{}{}", wanted_, note_.empty() ? "_" : "_  (no such item)");
  }
  if (!note_.empty()) {
    return note_;
  }
  if (history_.samples() == 0) {
    return "q quits";
  }
  const size_t shown = list_.visible().size();
  const std::string place = list_.size() == 0
                                ? "nothing has changed lately"
                                : fmt::format("{}-{} of {}{}", list_.top() + 1, list_.top() + shown,
                                              list_.size(), list_.changed_only() ? " changed" : "");
  return fmt::format("{}  q quit  / search  space {}  c {}", place, paused_ ? "go on" : "pause",
                     list_.changed_only() ? "all" : "changed only");
}

std::string WatchScreen::rows_as_text() const {
  const size_t columns = terminal_columns(STDOUT_FILENO).value_or(80);
  const RowLayout row_layout(name_width_, kMarkWidth + value_width_, columns);
  std::string text;
  for (const Item* item : list_.visible()) {
    const WatchHistory::Track& track = history_.track(*item);
    text += row_layout.before_value(id_text(item->id), printable(name_or_path(*item)),
                                    kMarkWidth + display_width(track.text));
    text += fmt::format("{} {}\n", mark_of(track), track.text);
  }
  return text;
}

}  // namespace kovactl
