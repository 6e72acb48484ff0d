// What a sweep asks, and when the next one begins.
#include "tools/host/values/sweep_plan.h"

#include "tests/host/items.h"

namespace kova_host {
namespace {

using namespace std::chrono_literals;

std::string ids_of(const std::vector<Item>& items) {
  std::string text;
  for (const Item& item : items) {
    text += std::to_string(item.id) + ' ';
  }
  return text;
}

TEST(SweepPlan, AsksForWhatCanHaveChanged) {
  std::vector<Item> items = {item_of(1, Role::identity, {}),        item_of(2, Role::reading, {}),
                             item_of(3, Role::factory_default, {}), item_of(4, Role::setting, {}),
                             item_of(5, Role::identity, {}),        item_of(2, Role::reading, {}),
                             item_of(6, Role::unknown, {}),         item_of(7, Role::state, {})};
  items[4].family = "G";
  SweepPlan plan(items);
  const struct {
    std::chrono::milliseconds at;
    std::string due;      // items that are asked first
    std::string failing;  // those of them that fail
    std::string beyond;   // what has to be asked as well
  } cases[] = {
      {0s, "1 2 3 4 5 6 7 ", "1 ", ""},
      {1s, "1 2 4 6 7 ", "1 ", ""},  // an identity that fails is asked on
      {2s, "1 2 4 6 7 ", "", "3 "},  // its family may be another part now
      {3s, "2 4 6 7 ", "", ""},
      {4s, "2 4 6 7 ", "7 ", "1 3 "},  // or go
      {59s, "2 4 6 7 ", "7 ", ""},
      {60s, "1 2 3 4 5 6 7 ", "7 ", ""},
      {119s, "2 4 6 7 ", "7 ", ""},
      {121s, "1 2 3 4 5 6 7 ", "7 ", ""},
  };
  for (const auto& [at, due, failing, beyond] : cases) {
    const std::vector<Item> asked = plan.due(at);
    EXPECT_EQ(ids_of(asked), due) << at.count();
    Readings readings;
    for (const Item& item : asked) {
      const bool fails = failing.find(std::to_string(item.id)) != std::string::npos;
      readings[item.id] = fails ? failed(5) : good(static_cast<double>(at.count()));
    }
    EXPECT_EQ(ids_of(plan.take(readings)), beyond) << at.count();
    EXPECT_EQ(plan.readings().size(), 7U);
  }
  EXPECT_EQ(plan.readings().at(5).number(), 121000);
  EXPECT_EQ(plan.readings().at(7).state, Reading::State::failed);
}

TEST(NextSweep, LeavesTheBusAsMuchTimeAsItTook) {
  const struct {
    std::chrono::milliseconds planned, began, ended, next;
  } cases[] = {
      {0ms, 0ms, 100ms, 1000ms},   // keeps to the clock,
      {0ms, 50ms, 150ms, 1000ms},  // also after a late begin
      {0ms, 0ms, 700ms, 1400ms},   // a rest as long as the sweep
      {0ms, 0ms, 9000ms, 18000ms},
      {0ms, 8000ms, 8100ms, 9000ms},  // after a pause nothing is made up for
  };
  for (const auto& [planned, began, ended, next] : cases) {
    const std::chrono::steady_clock::time_point zero;
    EXPECT_EQ(next_sweep(zero + planned, 1s, zero + began, zero + ended), zero + next)
        << next.count();
  }
}

}  // namespace
}  // namespace kova_host
