// kovactl against a module that misbehaves on purpose.
#include <gtest/gtest.h>

#include "program.h"

namespace {

const std::string kFake = "--module " KOVACTL_FAKE_MODULE " ";

struct Start {
  const char* scene;
  int exit_code;
  const char* message;
};

TEST(FakeModule, ThatDoesNotStartEndsTheCommandWithOneLine) {
  const Start cases[] = {
      {"no device", 3, "no device found; --simulate shows"},
      {"memory ran out", 3, "IOT_STATUS_NOT_READY (0xFFFFF0FF)"},
      {"no document", 3, "offers no items"},
      {"another module", 2, "is module 21, not 20"},
  };
  for (const Start& c : cases) {
    const Result result = run(kFake + "list --json", {{"FAKE_MODULE", c.scene}});
    EXPECT_EQ(result.exit_code, c.exit_code) << c.scene;
    EXPECT_NE(result.err.find(c.message), std::string::npos) << result.err;
    EXPECT_EQ(result.err.find('\n'), result.err.size() - 1) << result.err;
    EXPECT_TRUE(json_is_false(json_object_get(parse_json(result.out).get(), "ok"))) << c.scene;
  }
}

TEST(FakeModule, LibraryWithoutTheSevenFunctionsIsRefused) {
  const Result result = run("--module libjansson.so.4 list");
  EXPECT_EQ(result.exit_code, 2);
  EXPECT_NE(result.err.find("KovaIoTInitialize"), std::string::npos) << result.err;
}

struct Read {
  const char* id;
  const char* text;
  int exit_code;
  const char* error;
};

TEST(FakeModule, ReadingIsWhatTheModuleFilledInAndNotWhatItsStatusSays) {
  const Read cases[] = {
      {"0x14150901", "-0.5", 0, ""},  // an accelerometer's failure with a value is none
      {"0x14150711", "0", 0, ""},     // even if the value is what a careless preset would be
      {"0x14150902", "N/A", 1, "IOT_STATUS_READ_FAILED (0xFFFFFAFF)"},
      {"0x14180101", "N/A", 1, "the module answered without a value"},
      {"0x14190E00", "N/A", 0, ""},  // does not apply at present
      {"0x14160601", "a\\x1b[2J\\x09b", 0, ""},
      {"0x14160746", "9.5", 0, ""},  // not in the document: the kinds are tried
      {"0x14140001", "N/A", 1, "the module answered without a value"},
  };
  for (const Read& c : cases) {
    const Result result = run(kFake + "get --value-only " + c.id);
    EXPECT_EQ(result.out, std::string(c.text) + "\n") << c.id;
    EXPECT_EQ(result.exit_code, c.exit_code) << c.id;
    EXPECT_NE(result.err.find(c.error), std::string::npos) << c.id << ": " << result.err;
  }
}

TEST(FakeModule, StrangeElementsArePassedOverAndFailuresStopNoOther) {
  const Result result = run(kFake + "list --json");
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_EQ(result.err, "kovactl: 2 of 6 items could not be read\n");
  const Json document = parse_json(result.out);
  const json_t* items = json_object_get(document.get(), "items");
  ASSERT_EQ(json_array_size(items), 6U);
  EXPECT_TRUE(json_is_null(json_object_get(json_array_get(items, 2), "value")));
  EXPECT_EQ(json_integer_value(json_object_get(json_array_get(items, 2), "code")), 0xFFFFFAFF);
}

TEST(FakeModule, CodesOfTheDeviceLibraryItselfAreToldAsSuch) {
  const Result result = run(kFake + "set 0x14150901 1");
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_NE(result.err.find("device library code 0x11"), std::string::npos) << result.err;
}

TEST(FakeModule, NamesAndTextsCannotSteerATerminalOrBreakAFormat) {
  EXPECT_EQ(run(kFake + "list").out.find('\x1b'), std::string::npos);
  const std::string metrics = run(kFake + "metrics").out;
  EXPECT_NE(metrics.find("item=\"Red\x1b[31m \\\"\\\\\\n\",id=\"0x14160601\""), std::string::npos)
      << metrics;
  EXPECT_NE(run(kFake + "senml").out.find("\"Fake/Red__31m____/14160601\""), std::string::npos);
}

}  // namespace
