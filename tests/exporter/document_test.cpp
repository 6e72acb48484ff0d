// Bodies of /api/v1 as they are sent, what the store keeps for them, and lines of the log.
#include <gtest/gtest.h>
#include <poll.h>

#include <cmath>
#include <cstdlib>
#include <regex>

#include "include/kova_iot.h"
#include "tests/exporter/sample.h"
#include "tools/exporter/log.h"
#include "tools/host/judgements/judgement_table.h"
#include "tools/page/api_document.h"

namespace kova_exporter {
namespace {

const kova_page::SweepState kUp{17, 2, 1763734710.25, 0.4000004, 0.0123, 5, true, ""};
const std::string kUpText =
    R"("sweep":{"number":17,"time":1763734710.25,"age":0.4,"duration":0.0123,)"
    R"("interval":5.0,"pace":5.0,"up":true,"list":2})";
const kova_page::SweepState kWaiting{0, 0, {}, {}, {}, 0.1, false, "no \"bus\""};
const std::string kWaitingText =
    R"("sweep":{"number":0,"time":null,"age":null,"duration":null,)"
    R"("interval":0.1,"pace":0.1,"up":false,"error":"no \"bus\"","list":0})";

TEST(Documents, SayWhoseTheyAreAndHowFresh) {
  const std::string head = R"({"ok":false,"machine":{"name":"bus","simulated":)";
  const std::string release = R"(},"release":")" KOVA_IOT_VERSION R"(",)";
  const auto items = [](auto... parts) {
    const std::string text = kova_page::items_document(parts...);
    EXPECT_NE(text.find(R"("Celsuis":"°C")"), std::string::npos) << text;
    return std::regex_replace(text, std::regex(R"("units":\{[^}]*\})"), R"("units")");
  };
  using kova_page::ItemsText;
  using kova_page::Machine;
  EXPECT_EQ(items(Machine{"bus", ""}, ItemsText{"[1]", true}, kWaiting),
            head + "false" + release + kWaitingText + R"(,"units","items":[1]})");
  EXPECT_EQ(items(Machine{"bus", "x"}, ItemsText{"[]", false}, kUp),
            head + R"("x")" + release + kUpText + R"(,"units","items":[]})");
  EXPECT_EQ(kova_page::items_document({"", ""}, {"[]", true}, kUp).find(R"({"ok":true,)"), 0U);
  EXPECT_EQ(kova_page::history_document({}, kUp),
            R"({"ok":true,)" + kUpText + ",\"times\":[],\"series\":{}}\n");
  EXPECT_EQ(kova_page::history_document({{1, 2.5}, {{1, {NAN, 1e15}}, {0x14170311, {0.1, NAN}}}},
                                        kWaiting),
            R"({"ok":true,)" + kWaitingText + R"(,"times":[1,2.5],"series":)" +
                "{\"0x00000001\":[null,1e+15],\"0x14170311\":[0.1,null]}}\n");
}

TEST(Documents, EventsAreWhole) {
  EXPECT_EQ(kova_page::sweep_event(*sample_sweep(7, 0), kUp),
            "event: sweep\nid: 7\ndata: {" + kUpText +
                R"~(,"values":[3000,null,"a \"b\""],"failed":{"1":{"failure":)~"
                R"~("the device did not answer (0x5)","status":null,"code":5}},"findings":[)~"
                R"~({"rule":"unreadable","severity":"critical","id":"0x14170312",)~"
                R"~("path":"F/P/fan 2","message":"cannot be read: the device did not answer )~"
                R"~((0x5)","action":")~" +
                std::string(kova_host::find_judgement("unreadable")->action) + "\"}]}\n\n");
  EXPECT_EQ(kova_page::status_event(kWaiting), "event: status\ndata: {" + kWaitingText + "}\n\n");
}

TEST(Store, KeepsHalfAnHourAndSaysWhenThereIsNews) {
  // A sample each interval, one a second at most, and the two ends of the half hour.
  for (const auto& [interval, kept] : {std::pair(1799.0, 3U), {5.0, 361U}, {0.1, 1801U}}) {
    Store store(interval);
    pollfd news{store.descriptor(), POLLIN, 0};
    EXPECT_EQ(poll(&news, 1, 0), 0);
    for (int i = 0; i < 2000; ++i) {
      auto snapshot = sample_sweep(1, 0);
      snapshot->time = i * std::max(interval, 1.0);
      const kova_page::RecentSamples::Row row = {{kFan, i}};
      store.publish(snapshot, &row);
      store.publish(snapshot, nullptr);  // one that failed has no numbers
      EXPECT_EQ(poll(&news, 1, 0), 1);
      store.acknowledge();
      EXPECT_EQ(poll(&news, 1, 0), 0);
    }
    EXPECT_EQ(store.history(store.history_ids(), -1, 5000).series[kFan].size(), kept) << interval;
    store.fail("no module");
    EXPECT_EQ(poll(&news, 1, 0), 1);
    EXPECT_EQ(store.failure(), "no module");
  }
}

TEST(Log, IsALineForPeopleOrTheJournal) {
  const std::pair<const char*, std::string> levels[] = {
      {"debug", "<7>"}, {"info", "<6>"}, {"warn", "<4>"}, {"error", "<3>"}};
  setenv("JOURNAL_STREAM", "8:1", 1);
  std::string expected;
  testing::internal::CaptureStderr();
  for (const auto& [name, priority] : levels) {
    const LogLevel level = parse_log_level(name).value();
    set_log_level(level);
    log(LogLevel::info, "{}\nb\x1b\x7f\xc2\xb0\u202e ~", "a");
    log(level, "c");
    expected += (level <= LogLevel::info ? "<6>a\\x0ab\\x1b\\x7f\xc2\xb0\\u202e ~\n" : "") +
                priority + "c\n";
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(), expected);
  unsetenv("JOURNAL_STREAM");
  set_log_level(LogLevel::info);
}

}  // namespace
}  // namespace kova_exporter
