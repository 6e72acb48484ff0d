// Readings as metrics and as SenML, and earlier metrics read back.
#include "tools/host/export/metrics.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>

#include "include/kova_iot.h"
#include "tests/host/items.h"
#include "tools/host/export/senml.h"
#include "tools/host/model/item_data.h"
#include "tools/host/system/json_writer.h"
#include "tools/host/values/number_of.h"
#include "tools/host/values/units.h"

namespace kova_host {
namespace {

// The samples in a text of metrics, with the number of an item in the place of its labels.
std::string samples_in(const std::string& text) {
  const std::regex labels(R"rx(#.*\n|family="F",package="P 1",item="n(\d)",id="0x0000000\1")rx");
  return std::regex_replace(text, labels, "$1");
}

TEST(Units, HaveBaseUnitsInMetricsAndInSenml) {
  using enum ValueKind;
  const std::tuple<const char*, double, const char*, double, const char*> cases[] = {
      {"V", 12.1, "voltage_volts", 12.1, "V"},
      {"mV", 12100, "voltage_volts", 12.1, "V"},
      {"mA", 412.002, "current_amperes", 0.412002, "A"},
      {"mAh", 5200, "charge_coulombs", 18720, "C"},
      {"Cel", -3, "temperature_celsius", -3, "Cel"},
      {"Celsuis", 36.85, "temperature_celsius", 36.85, "Cel"},
      {"RPM", 1480, "fan_speed_rpm", 1480, "1/min"},
      {"sec(s)", 10, "duration_seconds", 10, "s"},
      {"min", 3, "duration_seconds", 180, "s"},
      {"time(s)", 3, "retries", 3, "count"},
      {"G", 2, "acceleration_meters_per_second_squared", 19.6133, "m/s2"},
      {"GB", 8, "memory_size_bytes", 8589934592, "B"},
      {"MT/s", 3200, "memory_speed_transfers_per_second", 3.2e9, ""},
      {"Ranks", 2, "memory_ranks", 2, ""},
      {"%", 29, "level_ratio", 0.29, "/"},
      {"cycles", 7, "charge_cycles", 7, "count"},
      {"", 3, "code", 3, ""},
      {"AZaz09@[`{/:", 3, "other_azaz09______", 3, ""},
  };
  for (const auto& [unit, published, name, value, symbol] : cases) {
    const Item item = item_of(1, Role::reading, real, unit);
    const Metric metric = value_metric(item);
    EXPECT_EQ(metric.name, std::string("kova_") + name);
    EXPECT_NE(metric.help, "");
    EXPECT_TRUE(metric.name.ends_with(metric.unit));
    // Exact: what the factor adds in the last places is rounded away.
    EXPECT_EQ(in_base_unit(unit, published), value) << unit;
    const Unit* known = find_unit(unit);
    EXPECT_EQ(known == nullptr ? "" : known->quantity->senml, symbol);
  }
}

TEST(Units, AreKnownOfEveryItem) {
  for (const FamilyData& family : item_data()) {
    for (const Item& item : family.items(1)) {
      EXPECT_TRUE(item.unit.empty() || find_unit(item.unit) != nullptr)
          << path_of(item) << ": '" << item.unit << "' has no row in tools/host/values/units.cpp";
    }
  }
}

TEST(Units, AreFoundInTextsToo) {
  const auto value_of = [](const char* text) {
    return published_value(item_of(1, Role::reading, ValueKind::text, "min"), good(text));
  };
  EXPECT_EQ(value_of("2 h 5 m"), 125);
  EXPECT_EQ(value_of("0 h 0 m"), 0);
  EXPECT_EQ(value_of("0x2D"), 45);
  for (const char* text :
       {"2 h 5", "2 h", "x h 5 m", "2 h x m", "2 h 5 mm", "2  h 5 m", "-2 h 5 m", ""}) {
    EXPECT_EQ(value_of(text), std::nullopt) << text;
  }
  const Item without_unit = item_of(1, Role::state, ValueKind::text);
  EXPECT_EQ(published_value(without_unit, good("45")), std::nullopt);
}

TEST(Metrics, EachKindOfItemHasItsOwn) {
  using enum Role;
  using enum ValueKind;
  const std::tuple<Item, Reading, const char*> cases[] = {
      {item_of(1, setting, real, "V", "", {}, 13), failed(5),
       "kova_setting_voltage_maximum_volts{1} 13\n"},
      {item_of(1, factory_default, real, "V", "", 1, 13), good(12.0),
       "kova_default_voltage_volts{1} 12\n"},
      {item_of(1, factory_default, integer, "V", "0=Auto|2=24V"), good(int64_t{2}),
       "kova_default_state{1,kova_default_state=\"Auto\"} 0\n"
       "kova_default_state{1,kova_default_state=\"24V\"} 1\n"},
      {item_of(1, state, text), good("Dirty  "), "kova_state{1,kova_state=\"Dirty\"} 1\n"},
      {item_of(1, state, text), good("0x7"), "kova_code{1} 7\n"},
      {item_of(1, identity, text), good(int64_t{7}), ""},
      {item_of(1, reading, text, "min"), good("soon"), ""},
      {item_of(1, unknown, integer, "", "", 0, 9), good(int64_t{4}), "kova_code{1} 4\n"},
      {item_of(1, reading, real, "V"), kAbsent, ""},
  };
  for (const auto& [item, reading_of_it, samples] : cases) {
    const std::string told =
        items_text({item}, {{1, reading_of_it}}, 0, {}, MetricsFormat::prometheus);
    EXPECT_EQ(std::regex_replace(samples_in(told), std::regex("kova_item_.*\n"), ""), samples);
  }
}

TEST(Metrics, TellOfEveryItemAndAreReadBack) {
  const std::vector<Item> items = {item_of(1, Role::reading, ValueKind::real, "V", "", 9, 13),
                                   item_of(2, Role::reading, ValueKind::real, "V"),
                                   item_of(3, Role::identity, ValueKind::text),
                                   item_of(4, Role::reading, ValueKind::real, "V", "", {}, 1)};
  const Readings readings = {
      {1, good(14.5)}, {2, failed(5)}, {3, good("a\"b\\\n")}, {4, good(0.5)}};
  const EarlierMetrics earlier = {.last_success = {{1, 1}, {2, 1700000000.25}, {9, 7}},
                                  .labels = {{2, "x"}, {9, "item=\"gone\",id=\"9\""}}};
  const std::string all =
      items_text(items, readings, 1700000100.5, earlier, MetricsFormat::openmetrics);
  EXPECT_EQ(samples_in(all), R"(kova_identity_info{3,value="a\"b\\\\x0a"} 1
kova_item_in_range{1} 0
kova_item_in_range{4} 1
kova_item_last_success_timestamp_seconds{1} 1700000100.5
kova_item_last_success_timestamp_seconds{2} 1700000000.25
kova_item_last_success_timestamp_seconds{3} 1700000100.5
kova_item_last_success_timestamp_seconds{4} 1700000100.5
kova_item_last_success_timestamp_seconds{item="gone",id="9"} 7
kova_item_read_success{1} 1
kova_item_read_success{2} 0
kova_item_read_success{3} 1
kova_item_read_success{4} 1
kova_item_read_success{item="gone",id="9"} 0
kova_voltage_maximum_volts{1} 13
kova_voltage_maximum_volts{4} 1
kova_voltage_minimum_volts{1} 9
kova_voltage_volts{1} 14.5
kova_voltage_volts{4} 0.5
)");

  // An item without a success has no time.
  const EarlierMetrics again = earlier_metrics(all);
  EXPECT_EQ(again.labels.at(1), R"(family="F",package="P 1",item="n1",id="0x00000001")");
  EXPECT_EQ(again.last_success,
            (std::map<uint32_t, double>{
                {1, 1700000100.5}, {2, 1700000000.25}, {3, 1700000100.5}, {4, 1700000100.5}}));
}

TEST(Metrics, NameTheirUnits) {
  for (const auto& metrics : {item_status_metrics(), sweep_metrics()}) {
    for (const Metric& metric : metrics) {
      EXPECT_EQ(metric.unit, metric.name.ends_with("_seconds") ? "seconds" : "") << metric.name;
    }
  }
}

TEST(Metrics, HelpTextsAndTypesAreThoseOfTheFormat) {
  const Metric metric = {"kova_s", MetricType::state_set, "", "a \"b\"\\\nc"};
  Exposition prometheus(MetricsFormat::prometheus);
  prometheus.add(metric, "", 1.0 / 3);
  EXPECT_EQ(prometheus.text(),
            "# TYPE kova_s gauge\n# HELP kova_s a \"b\"\\\\\\nc\n"
            "kova_s 0.333333333333333\n");
  Exposition openmetrics(MetricsFormat::openmetrics);
  openmetrics.add(metric, "l=\"1\"", 1);
  openmetrics.add({"kova_n_total", MetricType::counter, "", "N."}, "", 2);
  EXPECT_EQ(openmetrics.text(),
            "# TYPE kova_n counter\n# HELP kova_n N.\nkova_n_total 2\n"
            "# TYPE kova_s stateset\n"
            "# HELP kova_s a \\\"b\\\"\\\\\\nc\nkova_s{l=\"1\"} 1\n");
}

TEST(EarlierMetrics, PassOverWhatIsOfNoUse) {
  const std::string text = R"(
#
} 
{
id="
LAST{id="0x00000001"} NaN
LAST{id="0x0000000"} 1
LAST{id="0x00000002"
LAST 3
other{id="0x00000004"} 4
LAST{item="id=\"0x00000005\"} 5",id="0x00000006"} 6
kova_item_read_success{a="} ",id="0x00000007"} 0
LAST{id="0x00000008"} -8.5)";
  const EarlierMetrics earlier = earlier_metrics(
      std::regex_replace(text, std::regex("LAST"), "kova_item_last_success_timestamp_seconds"));
  EXPECT_EQ(earlier.last_success, (std::map<uint32_t, double>{{6, 6}, {8, -8.5}}));
  EXPECT_EQ(earlier.labels, (std::map<uint32_t, std::string>{{7, "a=\"} \",id=\"0x00000007\""}}));
}

TEST(EarlierMetrics, LabelsAreAsTheyWereBeforeTheyWereEscaped) {
  const std::string item = "a\n\\\"b\",id=\"no\"";
  const std::string labels = metric_label("item", item) + R"(,id="0x1",in="",end="x\)";
  EXPECT_EQ(label_value(labels, "item"), item);
  EXPECT_EQ(label_value(labels, "id"), "0x1");
  EXPECT_EQ(label_value(labels, "end"), "x\\");
  for (const char* none : {"in", "tem", "d", "no"}) {
    EXPECT_EQ(label_value(labels, none), "") << none;
  }
}

TEST(Senml, RecordsAreInTheRegistrysUnitsUnderNamesOfTheirOwn) {
  using enum ValueKind;
  const std::pair<Item, Reading> read[] = {
      {item_of(1, Role::reading, text, "min"), failed(5)},
      {item_of(2, Role::reading, integer, "mV"), good(int64_t{12100})},
      {item_of(3, Role::reading, text, "min"), good("2 h 5 m")},
      {item_of(4, Role::setting, boolean), good(int64_t{1})},
      {item_of(5, Role::setting, boolean), good(int64_t{0})},
      {item_of(6, Role::identity, text), good("V 1 \x01  ")},
      {item_of(7, Role::reading, real, "V"), kAbsent},
      {item_of(8, Role::reading, real, "MT/s"), good(12.0)},
      {item_named("F", "P_1", "n2", 0x14140201), good(int64_t{7})},
      {item_named("Fä", "0-9:./AZaz_", "@[`{", 10), good(0.5)},
  };
  std::vector<Item> items;
  Readings readings;
  for (const auto& [item, reading] : read) {
    items.push_back(item);
    readings[item.id] = reading;
  }
  const JsonPtr pack = senml_pack(items, readings, "base:", 1700000000.125);
  EXPECT_EQ(json_document(pack.get(), JsonLayout::one_line),
            R"([{"bn":"base:","bt":1700000000.125,"n":"F/P_1/n2/00000002","u":"V","v":12.1},)"
            R"({"n":"F/P_1/n3","u":"s","v":7500},{"n":"F/P_1/n4","vb":true},)"
            R"({"n":"F/P_1/n5","vb":false},{"n":"F/P_1/n6","vs":"V 1 \\x01"},)"
            R"({"n":"F/P_1/n8","v":12.0},{"n":"F/P_1/n2/14140201","v":7},)"
            R"({"n":"F__/0-9:./AZaz_/____","v":0.5}])"
            "\n");
  EXPECT_TRUE(is_senml_name("0-9:./AZaz_") && is_senml_name("Z"));
  EXPECT_FALSE(is_senml_name("") || is_senml_name(":a") || is_senml_name("a,b"));
}

TEST(Senml, MachinesAreNamedAfterTheirFirstEthernetCard) {
  namespace fs = std::filesystem;
  const fs::path cards = fs::path(testing::TempDir()) / "host_test_cards";
  const auto add_card = [&cards](const char* name, const char* address, const char* type) {
    fs::create_directories(cards / name);
    std::ofstream(cards / name / "address") << address << '\n';
    std::ofstream(cards / name / "type") << type << '\n';
  };
  fs::remove_all(cards);
  EXPECT_TRUE(is_senml_name(machine_base_name(cards)));
  add_card("dummy", "00:00:00:00:00:00", "1");
  add_card("ib0", "80:00:02:08:fe:80:00:00:00:00:00:00:24:8a:07:03:00:1a:2b:3c", "1");
  add_card("can0", "00:24:be:80:4f:f1", "280");
  EXPECT_EQ(machine_base_name(cards).find("urn:"), std::string::npos);
  add_card("eth1", "00:24:be:80:4f:f2", "1");
  add_card("eth0", "00:24:be:80:4f:f1", "1");
  EXPECT_EQ(machine_base_name(cards), "urn:dev:mac:0024befffe804ff1:");
  fs::remove_all(cards);
}

}  // namespace
}  // namespace kova_host
