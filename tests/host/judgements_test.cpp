// What needs attention: one sweep before the rules, and a course of them.
#include <gtest/gtest.h>

#include <map>
#include <set>

#include "tests/host/items.h"
#include "tools/host/judgements/judgement_course.h"
#include "tools/host/judgements/judgement_table.h"
#include "tools/host/judgements/monitoring_check.h"
#include "tools/host/model/item_data.h"

namespace kova_host {
namespace {

using ByPath = std::map<std::string, Reading>;  // by path

// The items of the catalogues that are in `values`, so that names and units are those of machines.
struct JudgedMachine {
  std::vector<Item> items;
  Readings readings;
};

JudgedMachine machine_of(const ByPath& values) {
  JudgedMachine machine;
  for (const FamilyData& family : item_data()) {
    for (const Item& item : family.items(1)) {
      if (const auto value = values.find(path_of(item)); value != values.end()) {
        machine.items.push_back(item);
        machine.readings.emplace(item.id, value->second);
      }
    }
  }
  EXPECT_EQ(machine.items.size(), values.size()) << values.begin()->first;
  return machine;
}

// "kind item evidence; ", the worst first.
std::string told(const std::vector<Finding>& findings) {
  std::string text;
  for (const Finding& finding : findings) {
    text += (finding.severity == Severity::critical ? "!" : "") + finding.kind + ' ' +
            finding.path.substr(finding.path.rfind('/') + 1) + ": " + finding.evidence + "; ";
  }
  return text;
}

std::string judged(const ByPath& values, const Thresholds& thresholds = {}) {
  const JudgedMachine machine = machine_of(values);
  return told(judge(machine.items, machine.readings, thresholds));
}

ByPath supply(const char* type, double volts, int64_t guarded = 1) {
  return {{"PIC/Information/Battery type", good(type)},
          {"PIC/Settings/Low battery voltage setup", good(guarded)},
          {"PIC/Settings/12V low battery voltage", good(10.5)},
          {"PIC/Settings/24V low battery voltage", good(22.0)},
          {"PIC/Real-time status/Power input", good(volts)}};
}

const std::string kFan = "TRK-7000/Onboard fan speeds/TRK7K OB fan ";
const std::string kVtin = "TRK-7000/Temperatures/TRK7K VTIN ";
const std::string kBattery = "SMART BATTERY/SMART BATTERY/";

TEST(Judgements, OfOneSweep) {
  const auto whole = [](int64_t value) { return good(value); };
  const std::pair<ByPath, std::string> cases[] = {
      {{{kFan + "1", whole(0)}, {kFan + "2", whole(3000)}, {kFan + "3", failed(5)}},
       "!fan-stopped TRK7K OB fan 1: 0 RPM; "
       "!unreadable TRK7K OB fan 3: the device did not answer (0x5); "},
      {{{kFan + "1", whole(0)}, {kFan + "2", whole(0)}}, ""},
      {{{kFan + "1", whole(9000)}, {kFan + "2", whole(8000)}},
       "out-of-range TRK7K OB fan 1: 9000 RPM (0 .. 8000); "},
      {{{kVtin + "1", whole(90)}, {kVtin + "2", whole(91)}, {kVtin + "3", whole(101)}},
       "temperature-near-maximum TRK7K VTIN 2: 91 Cel (maximum 100); "
       "out-of-range TRK7K VTIN 3: 101 Cel (0 .. 100); "},
      {{{kVtin + "1", whole(-272)}, {kBattery + "Temperature", good(-273.15)}},
       "absolute-zero Temperature: -273.15 Celsuis; absolute-zero TRK7K VTIN 1: -272 Cel; "},
      {{{kVtin + "1", whole(-271)}}, "out-of-range TRK7K VTIN 1: -271 Cel (0 .. 100); "},
      {{{kBattery + "SoH", whole(60)}, {kBattery + "ErrorCodes", good("0x0")}}, ""},
      {{{kBattery + "SoH", whole(59)}, {kBattery + "ErrorCodes", good("0x7")}},
       "battery-worn SoH: 59 %; battery-error ErrorCodes: 0x7; "},
      {{{kBattery + "Average Time To Full", kAbsent}}, ""},
      {{{kBattery + "Manufacturer Name", failed(0)}},
       "!unreadable Manufacturer Name: the device answers a text that is not UTF-8; "},
      {{{"PoE/PoE 1/PoE 1 current", good(580.0)}},
       "port-overload PoE 1 current: 580 mA (maximum 600); "},
      {{{"PoE/PoE 1/PoE 1 current", good(570.0)}, {kBattery + "Current", whole(32000)}}, ""},
      // The supply before what the machine says of itself.
      {supply("12V", 10.8), ""},
      {supply("12V", 10.7), "input-near-cut-off Power input: 10.7 V (cut-off 10.5); "},
      {supply("12V", 10.5), "input-near-cut-off Power input: 10.5 V (cut-off 10.5); "},
      {supply("12V", 10.1), "!input-below-cut-off Power input: 10.1 V (cut-off 10.5); "},
      {supply("12V", 10.1, 0), ""},
      {supply("12V", 16.5),
       "input-above-supply Power input: 16.5 V (at most 16 with a battery of 12V); "},
      {supply("24V", 27.6), ""},
      {supply("24V", 10.1), "!input-below-cut-off Power input: 10.1 V (cut-off 22); "},
      {supply("24V", 32.1),
       "input-above-supply Power input: 32.1 V (at most 32 with a battery of 24V); "},
      {supply("ERR", 27.6),
       "battery-type-unknown Battery type: ERR; "
       "out-of-range Power input: 27.6 V (0 .. 24); "},
      {{{"PIC/Real-time status/Power input", good(27.6)}},
       "out-of-range Power input: 27.6 V (0 .. 24); "},
  };
  for (const auto& [values, findings] : cases) {
    EXPECT_EQ(judged(values), findings);
  }
}

TEST(Judgements, SentencesNameTheItemByItsPath) {
  JudgedMachine machine = machine_of(supply("12V", 10.1));
  const std::vector<Finding> findings = judge(machine.items, machine.readings);
  ASSERT_EQ(findings.size(), 1U);
  EXPECT_EQ(findings[0].sentence(),
            "PIC/Real-time status/Power input is below the low-battery "
            "threshold in force: 10.1 V (cut-off 10.5)");
  Item turned = item_of(7, Role::setting, ValueKind::integer, "sec(s)", "", 70000, 3600);
  turned.missing = false;
  Item lost = item_of(8, Role::reading, ValueKind::real);
  lost.missing = true;
  const auto others = judge({turned, lost}, {{7, good(int64_t{9})}, {8, failed(0)}});
  ASSERT_EQ(others.size(), 2U);
  EXPECT_EQ(others[0].sentence(), "F/P 1/n8 is gone: this machine does not have it");
  EXPECT_EQ(others[1].sentence(),
            "F/P 1/n7 is outside its published range: 9 sec(s) (range is turned over: 70000 .. "
            "3600)");
  EXPECT_EQ(others[1].action, "Compare value and range with kovactl get 0x00000007.");
}

TEST(Judgements, LimitsOfTheUsersOwn) {
  const auto limits = [](const char* path, const char* warning, const char* critical) {
    Thresholds thresholds;
    const uint32_t id = machine_of({{path, kAbsent}}).items.at(0).id;
    if (*warning != '\0') {
      thresholds.warning[id] = parse_alert_range(warning).value();
    }
    if (*critical != '\0') {
      thresholds.critical[id] = parse_alert_range(critical).value();
    }
    return thresholds;
  };
  const std::string errors = kBattery + "ErrorCodes";
  const std::string full = kBattery + "Average Time To Full";
  const char* const type = "PIC/Information/Battery type";
  const std::tuple<const char*, Reading, const char*, const char*, std::string> cases[] = {
      {errors.c_str(), good("0x7"), "", "0", "!limit ErrorCodes: 0x7 (limit 0); "},
      {errors.c_str(), good("0x7"), "", "8", ""},
      {errors.c_str(), good("seven"), "", "0", "no-number ErrorCodes: seven; "},
      {errors.c_str(), failed(5), "", "0",
       "!unreadable ErrorCodes: the device did not answer "
       "(0x5); "},
      {full.c_str(), good("2 h 5 m"), "124", "",
       "limit Average Time To Full: 2 h 5 m (limit 124); "},
      {full.c_str(), kAbsent, "124", "", ""},
      {type, good("24V"), "@2:2", "", "limit Battery type: 24V (limit @2:2); "},
      // A limit takes the place of the rules on the value.
      {type, good("ERR"), "~:", "", ""},
  };
  for (const auto& [path, reading, warning, critical, findings] : cases) {
    EXPECT_EQ(judged({{path, reading}}, limits(path, warning, critical)), findings);
  }
  Thresholds rules;
  rules.rules["fan-stopped"].off = true;
  rules.rules["battery-worn"] = {.severity = Severity::critical, .limit = 0.8};
  EXPECT_EQ(judged({{kFan + "1", good(int64_t{0})},
                    {kFan + "2", good(int64_t{9})},
                    {kBattery + "SoH", good(int64_t{79})}},
                   rules),
            "!battery-worn SoH: 79 %; ");
}

TEST(Judgements, AskWhatTheyNeedBesideTheSelectedItems) {
  ByPath values = supply("12V", 10.1);
  values.merge(ByPath{{kFan + "1", good(int64_t{0})}, {kFan + "2", good(int64_t{9})}});
  JudgedMachine machine = machine_of(values);
  const auto verdict = [&machine](const std::string& name) {
    std::vector<Item> selected = machine.items;
    std::erase_if(selected, [&name](const Item& item) { return item.name != name; });
    const std::vector<Item> read = with_companions(selected, machine.items);
    return told(judge_selected(selected, read, machine.readings)) + std::to_string(read.size());
  };
  EXPECT_EQ(verdict("Power input"), "!input-below-cut-off Power input: 10.1 V (cut-off 10.5); 5");
  EXPECT_EQ(verdict("TRK7K OB fan 1"), "!fan-stopped TRK7K OB fan 1: 0 RPM; 2");
  EXPECT_EQ(verdict("TRK7K OB fan 2"), "2");
  // What cannot be judged without a companion is not well.
  for (auto& [id, reading] : machine.readings) {
    reading = failed(5);
  }
  EXPECT_NE(verdict("Power input").find("!unreadable Battery type"), std::string::npos);
  EXPECT_EQ(verdict("TRK7K OB fan 2"),
            "!unreadable TRK7K OB fan 2: the device did not answer (0x5); 2");
}

TEST(JudgementCourse, TellsWhatBeginsGetsWorseAndEnds) {
  const auto course_of = [](JudgementCourse course,
                            const std::vector<std::pair<double, ByPath>>& sweeps) {
    std::string text;
    for (const auto& [time, values] : sweeps) {
      const JudgedMachine machine = machine_of(values);
      for (const Transition& change : course.take(time, machine.items, machine.readings)) {
        const Standing& standing = change.standing;
        text += std::to_string(static_cast<int>(change.time)) + ' ' + standing.now.kind + ' ' +
                std::string(change.from ? severity_name(*change.from) : "well") + '>' +
                std::string(change.to ? severity_name(*change.to) : "well") + " since " +
                std::to_string(static_cast<int>(standing.since)) + " worst " +
                standing.worst.value + "; ";
      }
    }
    return text + std::to_string(course.standing().size());
  };
  const auto hot = [](int64_t degrees) { return ByPath{{kVtin + "1", good(degrees)}}; };
  const ByPath gone = {{kVtin + "2", good(int64_t{40})}};
  ByPath both = hot(40);
  both.merge(ByPath(gone));
  using enum JudgementCourse::Patience;
  EXPECT_EQ(
      course_of(JudgementCourse(),
                {{0, hot(95)}, {299, hot(97)}, {300, hot(93)}, {310, hot(92)}, {320, hot(9)}}),
      "300 temperature-near-maximum well>warning since 0 worst 97 Cel; "
      "320 temperature-near-maximum warning>well since 0 worst 97 Cel; 0");
  // It does not add up over a moment that is well, unless nothing may be passed over.
  const std::vector<std::pair<double, ByPath>> twice = {
      {0, hot(95)}, {200, hot(9)}, {400, hot(95)}};
  EXPECT_EQ(course_of(JudgementCourse(), twice), "0");
  EXPECT_EQ(course_of(JudgementCourse({}, none), twice),
            "0 temperature-near-maximum well>warning since 0 worst 95 Cel; "
            "200 temperature-near-maximum warning>well since 0 worst 95 Cel; "
            "400 temperature-near-maximum well>warning since 400 worst 95 Cel; 1");
  Thresholds limits;
  limits.warning[0x14170111] = parse_alert_range("70").value();
  limits.critical[0x14170111] = parse_alert_range("85").value();
  EXPECT_EQ(course_of(JudgementCourse(limits), {{0, hot(80)}, {1, hot(90)}, {2, hot(75)}}),
            "0 limit well>warning since 0 worst 80 Cel; "
            "1 limit warning>critical since 0 worst 90 Cel; "
            "2 limit critical>warning since 0 worst 90 Cel; 1");
  EXPECT_EQ(course_of(JudgementCourse({}, none), {{0, both}, {10, gone}, {3700, gone}}),
            "10 gone well>critical since 10 worst missing: this machine does not have it; "
            "3700 gone critical>well since 10 worst missing: this machine does not have it; 0");
}

TEST(MonitoringCheck, IsOneLineAndALineForEachFinding) {
  std::vector<Item> items = {item_of(1, Role::reading, {}, "sec(s)", "", 0, 9),
                             item_of(2, Role::state, {}, "%", "", {}, 9),
                             item_of(3, Role::unknown, {}), item_of(4, Role::reading, {})};
  items[0].name = "a='|";
  Readings readings = {{1, good(5.0)}, {2, good(int64_t{5})}, {3, good(5.0)}, {4, kAbsent}};
  const auto limit = [](const char* text) { return parse_alert_range(text).value(); };
  Thresholds limits;
  limits.warning[3] = limit("7");
  limits.critical[3] = limit("8:");
  const auto text = [&](const Thresholds& thresholds) {
    return check_readings(items, readings, judge(items, readings, thresholds), thresholds).text;
  };
  EXPECT_EQ(text({}),
            "KOVA OK - 4 items read | 'F/P 1/a-''/'=5s;;;0;9 'F/P 1/n2'=5%;;;;9 'F/P 1/n3'=5\n");
  readings[1] = readings[2] = good(10.0);
  EXPECT_EQ(text(limits),
            "KOVA CRITICAL - F/P 1/n3 is beyond its limit: 5 (limit 8:), F/P 1/a='/ is outside its "
            "published range: 10 sec(s) (0 .. 9), F/P 1/n2 is outside its published range: 10 % "
            "(? .. 9) | 'F/P 1/a-''/'=10s;;;0;9 'F/P 1/n2'=10%;;;;9 'F/P 1/n3'=5;7;8:\n"
            "CRITICAL: F/P 1/n3 is beyond its limit: 5 (limit 8:)\n"
            "WARNING: F/P 1/a='/ is outside its published range: 10 sec(s) (0 .. 9)\n"
            "WARNING: F/P 1/n2 is outside its published range: 10 % (? .. 9)\n");
}

}  // namespace
}  // namespace kova_host
