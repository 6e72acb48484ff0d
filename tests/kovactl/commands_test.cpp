// The program as it ships, with the plug-in, on simulated machines.
#include <gtest/gtest.h>

#include <set>

#include "module/kova_iot.h"
#include "program.h"

namespace {

// The built-in machine with one reading that fails, one outside its range, and two that stand
// still.
constexpr const char* kWornMachine = R"({"base": "builtin", "codes": {
  "0x00240001": {"fail_read": 5}, "0x00820000": 4231, "0x00240000": 412002, "0x00250000": 12100,
  "0x00250001": 48247}})";

class Worn : public testing::Test {
 protected:
  Result run_worn(const std::string& arguments) const {
    return run("--simulate " + machine_ + " " + arguments);
  }
  TemporaryFolder folder_;
  std::string machine_ = folder_.file("worn.json", kWornMachine);
};

TEST_F(Worn, ListIsAlignedGroupedAndMarked) {
  const Result result = run_worn("list --family poe");
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_EQ(result.err, "kovactl: 1 of 20 items could not be read\n");
  EXPECT_EQ(result.out.substr(0, result.out.find("\n\nPoE: PoE 3")),
            "  ID          NAME           VALUE       RANGE     ACCESS\n"
            "\n"
            "PoE: PoE 1\n"
            "  0x14140B01  PoE 1 power    1           0 .. 1    rw\n"
            "  0x14140801  PoE 1 detect   4           0 .. 7    r\n"
            "  0x14140901  PoE 1 class    4           0 .. 7    r\n"
            "  0x14140401  PoE 1 current  412.002 mA  0 .. 600  r\n"
            "  0x14140201  PoE 1 voltage  12.1 V      0 .. 100  r\n"
            "\n"
            "PoE: PoE 2\n"
            "  0x14140B02  PoE 2 power    1           0 .. 1    rw\n"
            "  0x14140802  PoE 2 detect   4           0 .. 7    r\n"
            "  0x14140902  PoE 2 class    2           0 .. 7    r\n"
            "  0x14140402  PoE 2 current  N/A         0 .. 600  r\n"
            "  0x14140202  PoE 2 voltage  48.247 V    0 .. 100  r");
  const std::string board = run_worn("list --family trk-7000").out;
  EXPECT_NE(board.find("150 Cel   0 .. 100   r  OUT OF RANGE\n"), std::string::npos) << board;
}

TEST_F(Worn, ListAsJsonHasEveryElementOfTheDocumentWithItsStatus) {
  const Result list = run_worn("list --json");
  EXPECT_EQ(list.exit_code, 1);
  const Json listed = parse_json(list.out);
  const Json document = parse_json(run_worn("capability --compact").out);
  size_t elements = 0;
  const char* family_name = nullptr;
  json_t* family = nullptr;
  json_object_foreach(document.get(), family_name, family) {
    const char* key = nullptr;
    json_t* package = nullptr;
    json_object_foreach(family, key, package) {
      elements += json_array_size(json_object_get(package, "e"));
    }
  }
  const json_t* items = json_object_get(listed.get(), "items");
  EXPECT_EQ(json_array_size(items), elements);
  size_t failed = 0;
  for (size_t i = 0; i < json_array_size(items); ++i) {
    const json_t* item = json_array_get(items, i);
    EXPECT_TRUE(json_is_integer(json_object_get(item, "code")));
    if (json_is_false(json_object_get(item, "ok"))) {
      ++failed;
      EXPECT_EQ(json_integer_value(json_object_get(item, "code")), 5);  // the device's own code
      EXPECT_TRUE(json_is_null(json_object_get(item, "status")));
    }
  }
  EXPECT_EQ(failed, 1U);
}

struct Line {
  const char* arguments;
  int exit_code;
  const char* out;  // part of stdout
  const char* err;  // part of stderr; "" for an empty one
};

void check(const Line* begin, const Line* end) {
  for (const Line* c = begin; c != end; ++c) {
    const Result result = run(c->arguments);
    EXPECT_EQ(result.exit_code, c->exit_code) << c->arguments;
    EXPECT_NE(result.out.find(c->out), std::string::npos) << c->arguments << "\n" << result.out;
    EXPECT_EQ(result.err.empty(), std::string_view(c->err).empty()) << result.err;
    EXPECT_NE(result.err.find(c->err), std::string::npos) << c->arguments << "\n" << result.err;
    EXPECT_LE(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
  }
}

TEST(Program, ReadsAndWritesSingleItems) {
  const Line cases[] = {
      {"--simulate get 0x14160716", 0, "0x14160716 12V low battery voltage  10.5 V\n", ""},
      {"get 336987926 --simulate", 0, "10.5 V", ""},
      {"get --simulate 0x14150741", 0, "2 (-2~+2G)", ""},
      {"--simulate get 0x14150721 --value-only", 0, "0\n", ""},
      {"--simulate get 0x14160746 --value-only", 0, "9.5\n", ""},
      {"--simulate get 0x14200001", 1, "N/A", "IOT_STATUS_UNSUPPORTED (0xFFFFFCFF)"},
      {"--simulate get 0x14140B01 0x14200001 0x14140B02", 1, "PoE 2 power  1", "0x14200001"},
      {"--simulate set 0x14140B01 off", 0, "PoE 1 power  0\n", ""},
      {"--simulate set 0x1416071B 24v", 0, "2 (24V)\n", ""},
      {"--simulate set 0x14150741 -16~+16G", 0, "16 (-16~+16G)", ""},
      {"--simulate set 0x14150722 -0.25", 0, "-0.25 G\n", ""},
      {"--simulate set 0x14150711 0 --json", 0, "\"label\": \"standby\"", ""},
      {"--simulate set 0x14160716 11", 0, "11 V\n", ""},
      {"--simulate set 0x14160716 9.55", 0, "9.5 V, after 9.55 was sent\n", ""},
      {"--simulate set 0x14160716 15", 1, "", "its range is 9.5 .. 11.5"},
      {"--simulate set 0x14160716 15 --json", 1, "\"code\": 4294966014", "WRITE_FAILED"},
      {"--simulate set 0x14160801 1", 1, "",
       "IOT_STATUS_UNSUPPORTED (0xFFFFFCFF), it is read-only"},
      {"--simulate set 0x14160711 2.5", 2, "", "whole numbers"},
      {"--simulate set 0x1416071B 48V", 2, "", "0 (Auto), 1 (12V), 2 (24V)"},
  };
  check(std::begin(cases), std::end(cases));
}

TEST(Program, TellsUsageErrorsInOneLine) {
  const Line cases[] = {
      {"", 2, "", "kovactl: A subcommand is required"},
      {"lists", 2, "", "kovactl"},
      {"--simulate get", 2, "", "ID is required"},
      {"--simulate get 14140B01", 2, "", "'14140B01' is no item ID"},
      {"--simulate list --family nosuch", 2, "", "only: SDRAM, SMART BATTERY"},
      {"--simulate list extra", 2, "", "extra"},
      {"--simulate nosuch list", 2, "", "no machine description 'nosuch'"},
      {"--simulate list --module /nonexistent.so", 2, "", "cannot load the module"},
      {"--simulate watch --interval nan", 2, "", "'nan' is no interval"},
      {"--simulate watch --interval 0", 2, "", "'0' is no interval"},
      {"--simulate watch --count -1", 2, "", "'-1' is no number of samples"},
      {"--simulate senml --base-name a,b", 2, "", "base name"},
      {"list --simulate failing-reads --family PIC", 0, "IGN status", ""},  // shipped, by name
      {"--version", 0, "kovactl " KOVA_IOT_VERSION "\n", ""},
  };
  check(std::begin(cases), std::end(cases));
}

TEST(Program, ErrorsAreOneJsonDocumentToo) {
  const TemporaryFolder folder;
  const std::string bad = folder.file("bad.json", "{\"codes\": 1}");
  const std::string cases[] = {
      "--simulate get x --json",
      "--simulate get --json --nosuch",
      "--simulate " + bad + " list --json",
  };
  for (const std::string& arguments : cases) {
    const Result result = run(arguments);
    EXPECT_EQ(result.exit_code, 2) << arguments;
    EXPECT_EQ(result.err.find('\n'), result.err.size() - 1) << result.err;
    const Json document = parse_json(result.out);
    const json_t* error = json_object_get(document.get(), "error");
    EXPECT_TRUE(json_is_string(json_object_get(error, "message"))) << result.out;
    EXPECT_EQ(json_integer_value(json_object_get(error, "exit_code")), 2);
  }
}

TEST(Program, EveryHelpTextHasAnExample) {
  for (const char* command :
       {"", "list", "capability", "get", "set", "watch", "metrics", "senml"}) {
    const Result result = run(std::string(command) + " --help");
    EXPECT_EQ(result.exit_code, 0) << command;
    EXPECT_NE(result.out.find("Example:\n  kovactl "), std::string::npos) << result.out;
  }
}

}  // namespace
