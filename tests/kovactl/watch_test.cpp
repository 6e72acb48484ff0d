// `kovactl watch`, and what the program draws on a terminal.
#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <sstream>

#include "program.h"

namespace {

// Every device call moves this machine's clock by a second: port 1's voltage climbs 10 mV each.
constexpr const char* kClimbing = R"({"base": "builtin", "clock": {"step_ms": 1000}, "codes": {
  "0x00250000": {"ramp": {"from": 0, "per_second": 10, "to": 90000}}}})";

TEST(Watch, PrintsOneLineASampleWhenPiped) {
  const Result result = run("--simulate watch 0x14140B01 0x14200001 --interval 0.05 --count 3");
  EXPECT_EQ(result.exit_code, 1);  // one item cannot be read
  std::istringstream lines(result.out);
  size_t count = 0;
  const std::regex form(R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ\t0x14140B01=1\t0x14200001=N/A)");
  for (std::string line; std::getline(lines, line); ++count) {
    EXPECT_TRUE(std::regex_match(line, form)) << line;
  }
  EXPECT_EQ(count, 3U);
}

TEST(Watch, PrintsOneJsonDocumentALine) {
  const TemporaryFolder folder;
  const Result result = run("--simulate " + folder.file("climbing.json", kClimbing) +
                            " watch 0x14140201 --json --interval 0.05 --count 2");
  EXPECT_EQ(result.exit_code, 0);
  std::istringstream lines(result.out);
  double previous = -1;
  for (int sample = 0; sample < 2; ++sample) {
    std::string line;
    std::getline(lines, line);
    const Json document = parse_json(line);
    EXPECT_TRUE(json_is_real(json_object_get(document.get(), "time")));
    const json_t* item = json_array_get(json_object_get(document.get(), "items"), 0);
    const double value = json_real_value(json_object_get(item, "value"));
    EXPECT_GT(value, previous) << "read afresh each time";
    previous = value;
  }
}

TEST(Watch, RedrawsInPlaceUntilCtrlCAndLeavesTheTerminalInOrder) {
  const TemporaryFolder folder;
  const std::string machine = folder.file("climbing.json", kClimbing);
  TerminalRun program(
      {"--simulate", machine, "watch", "0x14140201", "0x14140B01", "--interval", "0.05"},
      {{"LC_ALL", "C.UTF-8"}, {"TERM", "xterm"}, {"NO_COLOR", ""}});
  ASSERT_TRUE(program.wait_for("sample 3 "));
  program.interrupt();
  EXPECT_EQ(program.finish(), 0);
  const std::string& screen = program.screen();
  EXPECT_NE(screen.find("\x1b[?25l"), std::string::npos) << "cursor hidden";
  EXPECT_NE(screen.find("\x1b[3A"), std::string::npos) << "moved up over title and two items";
  EXPECT_TRUE(std::regex_search(screen, std::regex("\\* \x1b\\[7m[0-9.]+ V"))) << "changed";
  EXPECT_NE(screen.find("▁█"), std::string::npos) << "a climbing value's bars";
  // The terminal may still echo the Ctrl-C behind it.
  const std::string given_back = "\x1b[?7h\x1b[?25h";
  EXPECT_TRUE(screen.ends_with(given_back) || screen.ends_with(given_back + "^C"))
      << "cursor and wrapping given back: ..."
      << testing::PrintToString(screen.substr(screen.size() - 40));
}

TEST(Watch, ShowsWhatFitsAndSaysSo) {
  TerminalRun program({"--simulate", "watch", "--count", "2", "--interval", "0.05"},
                      {{"NO_COLOR", "1"}, {"LC_ALL", "C"}});
  EXPECT_EQ(program.finish(), 0);
  const std::string& screen = program.screen();
  EXPECT_NE(screen.find("more do not fit"), std::string::npos);
  EXPECT_NE(screen.find("\x1b[9A"), std::string::npos) << "one row less than the terminal has";
  EXPECT_FALSE(std::regex_search(screen, std::regex("\x1b\\[[0-9;]*m"))) << "no colour";
  EXPECT_EQ(screen.find("▁"), std::string::npos) << "no UTF-8 where the user has none";
}

TEST(Terminal, ColoursOnlyThereAndOnlyIfWanted) {
  const Arguments list = {"--simulate", "list", "--family", "PoE"};
  TerminalRun coloured(list, {{"TERM", "xterm"}, {"NO_COLOR", ""}});
  EXPECT_EQ(coloured.finish(), 0);
  EXPECT_NE(coloured.screen().find("\x1b[1mPoE: PoE 1\x1b[0m"), std::string::npos);
  TerminalRun plain(list, {{"TERM", "xterm"}, {"NO_COLOR", "1"}});
  EXPECT_EQ(plain.finish(), 0);
  EXPECT_EQ(plain.screen().find('\x1b'), std::string::npos);
  EXPECT_EQ(run(list).out.find('\x1b'), std::string::npos);
}

TEST(Terminal, ShowsProgressOfSlowWork) {
  const TemporaryFolder folder;
  const std::string machine =
      folder.file("slow.json", R"({"base": "builtin", "bus": {"delay_us": 4000}})");
  TerminalRun program({"--simulate", machine, "list"}, {{"NO_COLOR", "1"}});
  EXPECT_EQ(program.finish(), 0);
  const std::string& screen = program.screen();
  EXPECT_TRUE(std::regex_search(screen, std::regex("\rstarting the module, [0-9]+ s")));
  EXPECT_TRUE(std::regex_search(screen, std::regex("\rreading [0-9]+/[0-9]+")));
  EXPECT_NE(screen.find("\r\x1b[K  ID "), std::string::npos) << "taken away before the result";
}

TEST(Pipe, ReaderThatLeavesEndsTheProgramQuietly) {
  const std::string command =
      "set -o pipefail; " KOVACTL_PROGRAM
      " --simulate watch --interval 0.05 2>&1 | head -n 1 | tr -d '\\n' | grep -q '=' ";
  const std::string shell = "bash -c \"" + command + "\"";
  EXPECT_EQ(std::system(shell.c_str()), 0);
  const std::string full = KOVACTL_PROGRAM " --simulate list >/dev/full 2>/dev/null";
  EXPECT_EQ(WEXITSTATUS(std::system(full.c_str())), 1);
}

}  // namespace
