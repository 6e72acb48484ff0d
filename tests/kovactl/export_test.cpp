// Metrics and SenML: the formats' own rules, and the numbers in them.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <map>
#include <regex>
#include <set>
#include <sstream>

#include "program.h"
#include "tools/kovactl/atomic_file.h"
#include "tools/kovactl/metrics.h"
#include "tools/kovactl/output.h"
#include "tools/kovactl/senml.h"

namespace {

namespace fs = std::filesystem;

struct Exposition {
  std::map<std::string, std::string> types;  // by family
  std::map<std::string, std::string> units;
  std::map<std::string, std::string> values;  // by name and labels
};

// Reads the lines of either format; a sample must follow its family's own header.
Exposition parse_exposition(const std::string& text) {
  Exposition result;
  const std::regex header(R"(# (TYPE|UNIT|HELP) ([a-z0-9_]+) (.+))");
  const std::regex sample(
      R"re(([a-z0-9_]+)(\{(?:[a-z]+="(?:[^"\\]|\\.)*",?)+\}) (-?[0-9.e+-]+))re");
  std::istringstream lines(text);
  std::string family;
  for (std::string line; std::getline(lines, line);) {
    std::smatch match;
    if (std::regex_match(line, match, header)) {
      const bool starts = match[1] == "TYPE";
      EXPECT_TRUE(!starts || !result.types.contains(match[2])) << "split block: " << line;
      EXPECT_TRUE(starts || match[2] == family) << line;
      family = match[2];
      (match[1] == "UNIT" ? result.units : result.types).try_emplace(family, match[3]);
    } else if (std::regex_match(line, match, sample)) {
      const std::string suffix = result.types[family] == "info" ? "_info" : "";
      EXPECT_EQ(match[1], family + suffix) << line;
      EXPECT_TRUE(result.values.emplace(match[1].str() + match[2].str(), match[3]).second)
          << "twice: " << line;
    } else {
      EXPECT_EQ(line, "# EOF");
      EXPECT_EQ(lines.peek(), EOF) << "text after the end";
    }
  }
  return result;
}

constexpr const char* kTestMachine = R"({"base": "builtin", "codes": {
  "0x00240001": {"fail_read": 5}, "0x00250000": 12100, "0x0062000A": 1}})";

class Export : public testing::Test {
 protected:
  Result run_export(const std::string& arguments) const {
    return run("--simulate " + machine_ + " " + arguments);
  }
  TemporaryFolder folder_;
  std::string machine_ = folder_.file("machine.json", kTestMachine);
};

TEST_F(Export, MetricsCarryTheModulesNumbersOnceEach) {
  const Result result = run_export("metrics");
  EXPECT_EQ(result.exit_code, 1);
  const Exposition metrics = parse_exposition(result.out);
  const auto poe = [](const char* item, const char* id) {
    return "{family=\"PoE\",package=\"PoE " + std::string(1, item[4]) + "\",item=\"" + item +
           "\",id=\"" + id + "\"}";
  };
  const std::pair<std::string, std::string> expected[] = {
      {"kova_voltage_volts" + poe("PoE 1 voltage", "0x14140201"), "12.1"},
      {"kova_state" + poe("PoE 1 power", "0x14140B01"), "1"},
      {"kova_value" + poe("PoE 1 class", "0x14140901"), "4"},
      {"kova_item_read_success" + poe("PoE 2 current", "0x14140402"), "0"},
      {"kova_item_read_success" + poe("PoE 1 power", "0x14140B01"), "1"},
      {"kova_fan_speed_rpm{family=\"TRK-7000\",package=\"Onboard fan speeds\",item=\"TRK7K OB fan "
       "7\",id=\"0x14170317\"}",
       "1480"},
      {"kova_voltage_millivolt{family=\"SMART BATTERY\",package=\"SMART BATTERY\",item=\"Design "
       "Voltage\",id=\"0x14190500\"}",
       "11100"},
      {"kova_item_info{family=\"PIC\",package=\"Information\",item=\"V/P mode\",id=\"0x14160603\","
       "value=\"Vehicle mode\"}",
       "1"},
  };
  for (const auto& [sample, value] : expected) {
    const auto found = metrics.values.find(sample);
    ASSERT_NE(found, metrics.values.end()) << sample << "\n" << result.out;
    EXPECT_EQ(found->second, value) << sample;
  }
  EXPECT_FALSE(
      metrics.values.contains("kova_current_milliampere" + poe("PoE 2 current", "0x14140402")));
  EXPECT_NE(result.out.find("IGN status, 48V output: 0=OFF, 1=ON."), std::string::npos);
}

TEST_F(Export, OpenMetricsNamesEndInTheirUnits) {
  const std::string text = run_export("metrics --openmetrics").out;
  EXPECT_TRUE(text.ends_with("\n# EOF\n"));
  const Exposition metrics = parse_exposition(text);
  EXPECT_EQ(metrics.types.at("kova_item"), "info");
  EXPECT_EQ(metrics.units.at("kova_temperature_celsius"), "celsius");
  for (const auto& [family, unit] : metrics.units) {
    EXPECT_TRUE(family.ends_with("_" + unit)) << family;
  }
}

TEST_F(Export, OutputFileIsReplacedWholeAndRemembersTheLastSuccess) {
  const fs::path file = folder_.path() / "kova.prom";
  const std::string before = R"(
kova_item_last_success_timestamp_seconds{item="id=\"0x14140201\"",id="0x14140402"} 1700000000.5
kova_item_last_success_timestamp_seconds{item="PoE 1 voltage",id="0x14140201"} 1700000000
kova_item_last_success_timestamp_seconds{id="0x1"} NaN
kova_item_last_success_timestamp_seconds{id= 1
)";
  folder_.file("kova.prom", before);
  ASSERT_EQ(run_export("metrics --output " + file.native()).exit_code, 1);
  const std::string text = file_text(file);
  EXPECT_NE(text.find("id=\"0x14140402\"} 1700000000.5\n"), std::string::npos) << "failed now";
  EXPECT_EQ(text.find("id=\"0x14140201\"} 1700000000\n"), std::string::npos) << "read well now";
  struct stat status {};
  ASSERT_EQ(stat(file.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0644U);

  EXPECT_EQ(run_export("metrics --output " + (folder_.path() / "no" / "x").native()).exit_code, 1);
  EXPECT_EQ(run("--module /none metrics --output " + file.native()).exit_code, 2);
  EXPECT_EQ(file_text(file), text) << "no new text, the old one stays";
}

TEST(AtomicFile, FailureLeavesTheOldFileAndNothingElse) {
  const TemporaryFolder folder;
  const std::string file = folder.file("file", "old");
  const fs::path link = folder.path() / "link";
  fs::create_symlink("file", link);
  kovactl::replace_file(link, "new");
  EXPECT_TRUE(fs::is_symlink(link));
  EXPECT_EQ(file_text(file), "new");

  ASSERT_EQ(mkfifo((folder.path() / "pipe").c_str(), 0600), 0);
  EXPECT_THROW(kovactl::replace_file(folder.path() / "pipe", "x"), kovactl::OutputError);
  EXPECT_THROW(kovactl::replace_file(folder.path(), "x"), kovactl::OutputError);

  // A disk that is full after four bytes.
  (void)std::signal(SIGXFSZ, SIG_IGN);
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  const rlimit limit{.rlim_cur = 4, .rlim_max = before.rlim_max};
  setrlimit(RLIMIT_FSIZE, &limit);
  EXPECT_THROW(kovactl::replace_file(file, "much too long"), kovactl::OutputError);
  setrlimit(RLIMIT_FSIZE, &before);
  EXPECT_EQ(file_text(file), "new");
  std::set<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder.path())) {
    names.insert(entry.path().filename());
  }
  EXPECT_EQ(names, (std::set<std::string>{"file", "link", "pipe"}));
}

TEST_F(Export, SenmlPackKeepsTheRulesOfItsStandard) {
  const Result result = run_export("senml --base-name urn:dev:ow:10e2073a01080063:");
  EXPECT_EQ(result.exit_code, 1);
  const Json pack = parse_json(result.out);
  const std::string line = run_export("senml --compact --base-name x").out;
  EXPECT_EQ(line.find('\n'), line.size() - 1);
  const std::set<std::string> units = {"V", "A", "C", "Cel",   "1/min",
                                       "s", "B", "/", "count", "m/s2"};
  const std::regex name("[A-Za-z0-9][-A-Za-z0-9:./_]*");
  std::set<std::string> names;
  ASSERT_GT(json_array_size(pack.get()), 100U);
  for (size_t i = 0; i < json_array_size(pack.get()); ++i) {
    const json_t* record = json_array_get(pack.get(), i);
    const std::string own = json_string_value(json_object_get(record, "n"));
    EXPECT_TRUE(std::regex_match(own, name)) << own;
    EXPECT_TRUE(names.insert(own).second) << own << " twice";
    int values = 0;
    for (const char* key : {"v", "vs", "vb"}) {
      values += json_object_get(record, key) != nullptr ? 1 : 0;
    }
    EXPECT_EQ(values, 1) << own;
    if (const json_t* unit = json_object_get(record, "u")) {
      EXPECT_TRUE(units.contains(json_string_value(unit))) << own;
    }
    EXPECT_EQ(json_object_get(record, "bn") != nullptr, i == 0) << own;
  }
  EXPECT_FALSE(names.contains("PoE/PoE_2_current/14140402")) << "could not be read";
  EXPECT_TRUE(kovactl::is_senml_name(kovactl::machine_base_name()));
}

TEST(Senml, ConvertsToTheRegistrysUnits) {
  const std::tuple<const char*, int64_t, const char*> cases[] = {
      {"mV", 11100, R"("u": "V", "v": 11.1)"},   {"mA", -1303, R"("u": "A", "v": -1.303)"},
      {"mAh", 5200, R"("u": "C", "v": 18720)"},  {"%", 81, R"("u": "/", "v": 0.81)"},
      {"GB", 8, R"("u": "B", "v": 8589934592)"}, {"RPM", 3161, R"("u": "1/min", "v": 3161)"},
      {"Celsuis", 41, R"("u": "Cel", "v": 41)"}, {"furlong", 3, R"("v": 3)"},
  };
  for (const auto& [unit, value, expected] : cases) {
    kovactl::Item item;
    item.id = 7;
    item.unit = unit;
    item.kind = kovactl::ValueKind::integer;
    const kovactl::Readings readings = {{7, {kovactl::Reading::State::good, 0, value}}};
    const kovactl::JsonPtr pack = kovactl::senml_pack({item}, readings, "b", 1);
    json_object_del(json_array_get(pack.get(), 0), "bn");
    json_object_del(json_array_get(pack.get(), 0), "bt");
    json_object_del(json_array_get(pack.get(), 0), "n");
    const Json wanted = parse_json("[{" + std::string(expected) + "}]");
    EXPECT_TRUE(json_equal(pack.get(), wanted.get())) << unit;
  }
}

}  // namespace
