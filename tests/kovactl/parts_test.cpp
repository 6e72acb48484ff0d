// Parts of kovactl that the program shows only in passing: tables in any width, curves made of
// characters, what a watch keeps and shows.
#include <gtest/gtest.h>

#include <cstdlib>

#include "tools/host/judgements/judge.h"
#include "tools/kovactl/sparkline.h"
#include "tools/kovactl/table.h"
#include "tools/kovactl/watch_list.h"

namespace kovactl {

using namespace kova_host;
namespace {

Item item(uint32_t id, const char* package, const char* name) {
  return {id, "F", package, name, "V", "rw", ValueKind::real, 0, 100, {}, {}};
}

const std::vector<Item> kItems = {item(1, "F", "port"), item(2, "F", "a name that is long"),
                                  item(3, "other", "broken")};
const Readings kReadings = {{1, {Reading::State::good, 0, 12.5}},
                            {2, {Reading::State::good, 0, int64_t{101}}},
                            {3, {Reading::State::failed, 5, {}}}};

TEST(Table, KeepsValuesWholeInAnyWidth) {
  EXPECT_EQ(
      item_table(kItems, kReadings, judge(kItems, kReadings), Painter(true), 69),
      "\x1b[2m  ID          NAME                 VALUE   RANGE     ACCESS\x1b[0m\n"
      "\n\x1b[1mF\x1b[0m\n  0x00000001  port                 12.5 V  0 .. 100  rw\n"
      "  0x00000002  a name that is long  \x1b[1;31m101 V \x1b[0m  0 .. 100  rw"
      "\x1b[1;31m  OUT OF RANGE\x1b[0m\n\n\x1b[1mF: other\x1b[0m\n"
      "  0x00000003  broken      \x1b[33munreadable: the device did not answer (0x5)\x1b[0m\n");
  const std::pair<size_t, std::string> cases[] = {
      {68, "0x00000002  a name that is long  101 V   rw"},
      {59, "0x00000002  a name that is long  101 V   rw"},
      {58, "0x00000002  a name that is long  101 V"},
      {54, "0x00000002  a name that is long  101 V"},
      {53, "0x00000002  a name that is lo~  101 V"},
      {41, "0x00000002  a name ~  101 V"},
      {40, "a name that is l~  101 V"},
      {20, "a name ~  101 V"}};
  for (const auto& [width, row] : cases) {
    const std::string text =
        item_table(kItems, kReadings, judge(kItems, kReadings), Painter(false), width);
    EXPECT_NE(text.find("\n  " + row + "  OUT OF RANGE\n"), std::string::npos) << width << text;
  }
}

TEST(Sparkline, HasEightLevelsBetweenTheLeastAndTheGreatest) {
  using Values = std::deque<std::optional<double>>;
  EXPECT_EQ(sparkline({}, true), "");
  EXPECT_EQ(sparkline(Values{5, 5}, true), "▁▁");
  EXPECT_EQ(sparkline(Values{0, 7, std::nullopt, 3.5}, true), "▁█ ▅");
  EXPECT_EQ(sparkline(Values{-1e308, 1e308}, false), "_#");
  EXPECT_EQ(sparkline({0, 1, 2, 3, 4, 5, 6, 7}, true), "▁▂▃▄▅▆▇█");
  EXPECT_EQ(sparkline({0, 1, 2, 3, 4, 5, 6, 7}, false), "_.-~=+*#");
}

TEST(Terminal, IsWhatTheEnvironmentSays) {
  const std::tuple<const char*, const char*, const char*, bool> cases[] = {
      {"", "", "", false},
      {"", "", "de_DE.UTF-8", true},
      {"", "C.utf8@x", "C", true},
      {"C", "", "C.UTF-8", false},
      {"C.UTF-8@x", "C", "C", true},
      {"UTF-8", "", "", false},
      {"en.ISO-8859-1", "", "", false}};
  for (const auto& [all, type, language, utf8] : cases) {
    setenv("LC_ALL", all, 1);
    setenv("LC_CTYPE", type, 1);
    setenv("LANG", language, 1);
    EXPECT_EQ(prefers_utf8(), utf8) << all << ' ' << type << ' ' << language;
  }
}

// What is seen of a list: the rows' IDs, a mark, and how many there are.
std::string seen(const WatchList& list) {
  std::string text;
  for (const Item* shown : list.visible()) {
    text += std::to_string(shown->id) + (list.is_marked(*shown) ? "* " : " ");
  }
  return text + "of " + std::to_string(list.size());
}

TEST(WatchList, ShowsAPartThatMoves) {
  std::vector<Item> items;
  Readings readings;
  for (uint32_t id = 1; id <= 9; ++id) {
    items.push_back(item(id, id == 4 ? "Fans" : "P", id % 3 == 0 ? "third" : "plain"));
    readings[id] = {Reading::State::good, 0, int64_t{id}};
  }
  WatchHistory history;
  WatchList list(items, false);
  history.follow(items, readings);
  list.update(history);
  EXPECT_EQ(seen(list), "1 of 9");
  // Room for so many rows, scrolling, turning pages, or a search and its step.
  const std::tuple<const char*, int, const char*> steps[] = {
      {"room", 4, "1 2 3 4 of 9"},
      {"scroll", 2, "3 4 5 6 of 9"},
      {"page", 1, "6 7 8 9 of 9"},
      {"page", -1, "2 3 4 5 of 9"},
      {"scroll", -5, "1 2 3 4 of 9"},
      {"THIRD", 0, "1 2 3* 4 of 9"},
      {"third", 1, "4 5 6* 7 of 9"},
      {"third", 0, "4 5 6* 7 of 9"},
      {"third", -1, "1 2 3* 4 of 9"},
      {"third", -1, "6 7 8 9* of 9"},
      {"fans", 1, "2 3 4* 5 of 9"},
      {"none", 1, "2 3 4* 5 of 9"},
      {"0X00000008", 1, "6 7 8* 9 of 9"},
      {"room", 99, "1 2 3 4 5 6 7 8* 9 of 9"},
      {"room", 0, "1 of 9"}};
  for (const auto& [what, number, expected] : steps) {
    const std::string_view step = what;
    if (step == "room") {
      list.set_room(static_cast<size_t>(number));
    } else if (step == "scroll") {
      list.scroll(number);
    } else if (step == "page") {
      list.turn_page(number);
    } else {
      EXPECT_EQ(list.find(step, number), step != "none");
    }
    EXPECT_EQ(seen(list), expected) << what;
  }
  list.show_changed_only(true, history);
  EXPECT_EQ(seen(list), "of 0");
  EXPECT_FALSE(list.find("third", 1));
  readings[7].value = int64_t{8};
  for (int sample = 2; sample <= 18; ++sample) {  // lately: within sixteen samples
    history.follow(items, readings);
    list.update(history);
    EXPECT_EQ(history.track(items[6]).changed, sample == 2);
    EXPECT_EQ(seen(list), sample < 18 ? "7 of 1" : "of 0");
  }
  EXPECT_EQ(history.track(items[6]).recent.size(), 16U);
  for (int from_the_top = 0; from_the_top < 2; ++from_the_top) {
    list.show_changed_only(false, history);
    EXPECT_EQ(seen(list), "1 of 9");
    list.scroll(3);
  }
}

}  // namespace
}  // namespace kovactl
