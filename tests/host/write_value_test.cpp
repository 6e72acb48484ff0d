// What a write sends for a text, and what is refused before anything is sent.
#include "tools/host/values/typed_value.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/host/items.h"

namespace kova_host {
namespace {

using enum ValueKind;

Item taking(std::optional<ValueKind> kind, std::string_view options = "") {
  return item_of(1, Role::setting, kind, "", options);
}

TEST(WriteValue, SendsWhatTheItemTakes) {
  const auto volts = [](WrittenAs written_as) {
    Item item = item_of(1, Role::setting, real, "V");
    item.facts.scale = 0.1;
    item.facts.written_as = written_as;
    return item;
  };
  using Sent = std::vector<std::pair<const char*, Number>>;
  const std::pair<Item, Sent> cases[] = {
      {taking(integer, "0=Auto|2=24V"), {{"24v", int64_t{2}}}},
      {taking(integer, "0=on|1=ON"), {{"ON", int64_t{1}}}},    // the exact word wins
      {taking(integer, "1=12V|12=x"), {{"12", int64_t{12}}}},  // a number is a number
      {taking(integer),
       {{"5.0", int64_t{5}},
        {"4294967295", int64_t{4294967295}},
        {"4294967295.0", int64_t{4294967295}},
        {"-2147483648", int64_t{-2147483648}}}},
      {taking(boolean),
       {{"on", int64_t{1}},
        {"off", int64_t{0}},
        {"Enable", int64_t{1}},
        {"disable", int64_t{0}},
        {"no", int64_t{0}},
        {"TRUE", int64_t{1}},
        {"false", int64_t{0}}}},
      {taking(boolean, "0=Disable|1=Enable"), {{"yes", int64_t{1}}}},
      {taking(boolean, "0=standby|1=go"), {{"on", int64_t{1}}, {"standby", int64_t{0}}}},
      {taking(real), {{"11", int64_t{11}}, {"11.0", 11.0}}},
      {taking(std::nullopt), {{"11.5", 11.5}}},
      {volts(WrittenAs::scaled), {{"10540 mV", 10.5}}},
      {volts(WrittenAs::integer), {{"10540 mV", 10.54}}},
  };
  for (const auto& [item, sent] : cases) {
    for (const auto& [text, number] : sent) {
      EXPECT_EQ(value_to_set(item, text), number) << text;
    }
  }
}

TEST(WriteValue, RefusesTheRestWithTheReason) {
  const std::tuple<Item, std::vector<std::string>, std::string> cases[] = {
      {taking(integer, "0=on|1=ON"), {"oN"}, "several options are called so, give the number"},
      {taking(integer, "0=a|1=24V"), {"", "b"}, "a number or one of 0 (a), 1 (24V) is needed"},
      {taking(integer, "0=a|1=24V"), {"24"}, "it takes one of 0 (a), 1 (24V); was 24V meant?"},
      {taking(integer),
       {"4294967296", "4294967296.0", "1e10", "-2147483649.0"},
       "it has more than 32 bits"},
      {taking(integer), {"2.5"}, "the item takes whole numbers"},
      {taking(boolean), {"0.5"}, "the item takes whole numbers"},
      {taking(integer, "3=1|2=x"), {"1", "4"}, "it takes one of 3 (1), 2 (x)"},
      {taking(boolean, "0=off|1=go"), {"go?"}, "a number or one of 0 (off), 1 (go) is needed"},
      {taking(real), {"1,5"}, "numbers have a point, as in 1.5"},
      {taking(real), {"on"}, "a number is needed"},
      {taking(real), {"1 V"}, "it has no unit"},
      {item_of(1, Role::setting, real, "V"), {"1 A"}, "its unit is V"},
  };
  for (const auto& [item, texts, reason] : cases) {
    for (const std::string& text : texts) {
      EXPECT_EQ(refusal([&, &taker = item] { value_to_set(taker, text); }),
                "'" + text + "' is no value for F/P 1/n1: " + reason);
    }
  }
  EXPECT_TRUE(refusal([] { value_to_set(Item(), "x"); })
                  .ends_with(" for 0x00000000: a number is "
                             "needed"));
}

TEST(WriteValue, ArrivesAsTheNearestCountThatTheDeviceCanHold) {
  for (const double scale : {0.1, 0.0001}) {
    const double factor = std::round(1 / scale);
    for (int count = -20000; count <= 20000; ++count) {
      const double sent = nearest_held(count * scale, scale);
      // What the module does with it.
      ASSERT_EQ(static_cast<int>(std::trunc(sent * factor)), count) << count * scale;
      ASSERT_NEAR(sent, count * scale, 1e-9);
    }
  }
}

}  // namespace
}  // namespace kova_host
