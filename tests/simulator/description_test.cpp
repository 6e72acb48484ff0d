// Which machine descriptions are accepted, and with which words the others are refused.
#include "simulator/description.h"

#include <gtest/gtest.h>

#include "simulator/json_node.h"

namespace {

using kova_sim::ParseResult;

// Stands in for the files that a description builds on.
std::string fake_file(const std::string& path) {
  if (path == "dir/base.json") {
    return R"({"codes": {"0x10": 7, "0x11": {"value": 8, "write": {"max": 9}}}})";
  }
  if (path == "dir/loop.json") {
    return R"({"base": "loop.json"})";
  }
  if (path == "dir/wrong.json") {
    return R"({"codes": {"0x10": true}})";
  }
  throw kova_sim::DescriptionError(path + ": cannot be read (ENOENT)");
}

ParseResult parse(const std::string& text) {
  return kova_sim::parse_description(text, "dir/m", fake_file);
}

struct Case {
  const char* text;
  const char* reason;  // how it begins
};

void expect_refused(const std::string& text, const std::string& reason) {
  const ParseResult result = parse(text);
  EXPECT_FALSE(result.machine) << text;
  EXPECT_EQ(result.error.substr(0, reason.size()), reason) << text;
  EXPECT_EQ(result.error.find('\n'), std::string::npos) << text;
}

TEST(Description, RefusesBadFilesWithFileAndKeyOrLine) {
  const Case cases[] = {
      {"{\n \"codes\": {,}}", "dir/m:2:12: "},
      {"", "dir/m:1:0: "},
      {"[]", "dir/m: expected an object"},
      {"{\"codes\": {\"0x1\": 1,\n\"0x1\": 2}}", "dir/m:2:5: duplicate"},
      {R"({"code": {}})", "dir/m: code: unknown key; known here: note, base,"},
      {"{\"new\\nline\": 1}", "dir/m: new line: unknown key"},
      {R"({"codes": 5})", "dir/m: codes: expected an object"},
      {R"({"bus": {"delay_us": -1}})", "dir/m: bus.delay_us: expected a whole number"},
      {R"({"clock": {}})", "dir/m: clock: \"step_ms\" is missing"},
      {R"({"base": "none.json"})", "dir/none.json: cannot be read (ENOENT)"},
      {R"({"base": "wrong.json"})", "dir/wrong.json: codes.0x10: expected a number,"},
      {R"({"base": "loop.json"})", "dir/loop.json: base: more than 8 descriptions"},
      {R"({"base": "base.json", "copy": {"0x20": "0x30..0x3F"}})", "dir/m: copy.0x20: none of"},
      {R"({"base": "base.json", "copy": {"0xFFFFFFFF": "0x10..0x11"}})",
       "dir/m: copy.0xFFFFFFFF: the key is"},
      {R"({"base": "base.json", "codes": {"0x11": null, "0x12": {"write": {"changes": "0x11"}}}})",
       "dir/m: codes.0x00000012.write.changes: 0x00000011 has no value"},
  };
  for (const Case& row : cases) {
    expect_refused(row.text, row.reason);
  }
}

TEST(Description, RefusesBadCodesAndEntries) {
  const Case cases[] = {
      {R"("16": 1)", "16: a device code is"},
      {R"("0x": 1)", "0x: a device code is"},
      {R"("0x123456789": 1)", "0x123456789: a device code is"},
      {R"("0x2..0x1": 1)", "0x2..0x1: a run goes upward"},
      {R"("0x0..0xFFFFFFFF": 1)", "0x0..0xFFFFFFFF: a run goes upward over at most 4096 codes"},
      {R"("0x1..0x3": [1, 2])", "0x1..0x3: 3 codes, but 2 entries"},
      {R"("0xFFFFFFFF": [1, 2])", "0xFFFFFFFF: 1 codes, but 2 entries"},
      {R"("0x1": [])", "0x1: 1 codes, but 0 entries"},
      {R"("0x10": 1, "0x00010": 1)", "0x00010: 0x00000010 is described twice"},
      {R"("0x0..0x4": 1, "0x3": [1, 2])", "0x3: 0x00000003 is described twice"},
      {R"("0x1..0x2": {"value": 1, "write": {"min": {"code": "0x2"}}})",
       "0x00000002.write.min: 0x00000003 has no value"},
      {R"("0x1..0x2": {"write": {"changes": "0xFFFFFFFF"}})",
       "0x1..0x2.write.changes: the run leaves"},
      // Entries.
      {R"("0x1": true)", "0x1: expected a number,"},
      {R"("0x1": 1.5)", "0x1: expected a number,"},
      {R"("0x1": [[1]])", "0x1[0]: expected a number,"},
      {R"("0x1": 4294967296)", "0x1: expected a whole number from -2147483648 to 4294967295"},
      {R"("0x1": "VLX-")", "0x1: expected a number, or \"0x\""},
      {R"("0x1": {"values": 1})", "0x1.values: unknown key"},
      {R"("0x1": {"text": "ABCDE"})", "0x1.text: 5 bytes do not fit 1 codes"},
      {R"("0x1": {"text": "A", "pad": "*"})", "0x1.pad: expected one of"},
      {R"("0x1": {"pad": "nul"})", "0x1.pad: there is no"},
      {R"("0x1": {"value": 1, "text": "A"})", "0x1: more than one of"},
      {R"("0x1": {"ramp": {"from": 1, "to": 2}})", "0x1.ramp: give either"},
      {R"("0x1": {"ramp": {"from": 1, "to": 1, "seconds": 1}})", "0x1.ramp: \"from\" and \"to\""},
      {R"("0x1": {"ramp": {"to": 1, "seconds": 1}})", "0x1.ramp: \"from\" is missing"},
      {R"("0x1": {"ramp": {"from": 1, "to": 2, "seconds": 0}})", "0x1.ramp.seconds: expected"},
      {R"("0x1": {"sine": {"mean": 4294967000, "amplitude": 296, "period_seconds": 1}})",
       "0x1.sine: the signal leaves"},
      {R"("0x1": {"noise": {"mean": 1, "amplitude": -1}})", "0x1.noise: the signal leaves"},
      {R"("0x1": {"fail_read": 0})", "0x1.fail_read: expected the status"},
      {R"("0x1": {"fail_read": {"every": 2}})", "0x1.fail_read: \"status\" is missing"},
      {R"("0x1": {"fail_read": {"status": 1, "every": 0}})",
       "0x1.fail_read.every: expected a whole number"},
      {R"("0x1": {"fail_write": {"status": 1, "stores": 0}})",
       "0x1.fail_write.stores: unknown key"},
      {R"("0x1": {"value": 1, "write": false})", "0x1.write: expected true"},
      {R"("0x1": {"value": 1, "write": {"min": 2, "max": 1}})", "0x1.write: \"min\" is above"},
  };
  for (const Case& row : cases) {
    expect_refused(std::string(R"({"codes": {)") + row.text + "}}",
                   std::string("dir/m: codes.") + row.reason);
  }
}

struct Reading {
  const char* text;
  std::uint32_t code;
  std::uint32_t word;
};

TEST(Description, GivesEachCodeItsFirstWord) {
  const Reading cases[] = {
      {R"({"codes": {"0x1": 4294967295}})", 0x1, 0xFFFFFFFF},
      {R"({"codes": {"0x1": -1000}})", 0x1, 0xFFFFFC18},
      {R"({"codes": {"0xaB": "0x5750"}})", 0xAB, 0x5750},
      {R"({"codes": {"0x1..0x3": 5}})", 0x3, 5},
      {R"({"codes": {"0x1": [5, 6, {"value": 7}]}})", 0x3, 7},
      {R"({"codes": {"0xFFFFFFFF": [5]}})", 0xFFFFFFFF, 5},
      {R"({"codes": {"0x1..0x3": {"text": "VLX-D4"}}})", 0x1, 0x564C582D},
      {R"({"codes": {"0x1..0x3": {"text": "VLX-D4"}}})", 0x2, 0x44342020},
      {R"({"codes": {"0x1..0x3": {"text": "VLX-D4"}}})", 0x3, 0x20202020},
      {R"({"codes": {"0x1..0x2": {"pad": "nul", "text": "A\u0000\u00E9B"}}})", 0x1, 0x4100C3A9},
      {R"({"codes": {"0x1..0x2": {"pad": "nul", "text": "A\u0000\u00E9B"}}})", 0x2, 0x42000000},
      {R"({"codes": {"0x1": {"ramp": {"from": "0x64", "to": -1, "per_second": 0.5}}}})", 0x1, 100},
      {R"({"codes": {"0x1": {"sine": {"mean": 2.5, "amplitude": 9, "period_seconds": 1}}}})", 0x1,
       3},
      // What a variation leaves out stays, null takes away, the order of the keys is free.
      {R"({"base": "base.json"})", 0x10, 7},
      {R"({"codes": {"0x10": 9}, "base": "base.json"})", 0x10, 9},
      {R"({"base": "base.json", "codes": {"0x10": {"delay_us": 0}}})", 0x10, 7},
      {R"({"base": "base.json", "codes": {"0x10..0x11": null, "0x1": 1}})", 0x1, 1},
      {R"({"codes": {"0x20": 1}, "base": "base.json", "copy": {"0x20": "0x10..0x11"}})", 0x20, 1},
      {R"({"codes": {"0x20": 1}, "base": "base.json", "copy": {"0x20": "0x10..0x11"}})", 0x21, 8},
      {R"({"base": "builtin", "codes": {"0x1": 1}})", 0xA00011, 0x564C582D},
  };
  for (const Reading& row : cases) {
    ParseResult result = parse(row.text);
    ASSERT_TRUE(result.machine) << row.text << "\n" << result.error;
    std::uint32_t word = 0xDEAD;
    EXPECT_EQ(kova_sim::Machine(std::move(*result.machine)).read(row.code, &word), 0U) << row.text;
    EXPECT_EQ(word, row.word) << row.text;
  }
}

}  // namespace
