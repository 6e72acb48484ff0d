// The sampling thread on a simulated machine, which the program's worker reads.
#include "tools/exporter/sampler.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <thread>

namespace kova_exporter {
namespace {

// The clock goes on with each call and with nothing else. An add-on board with a temperature and a
// fan that skips answers; ports that come later; then nothing answers for a while.
constexpr const char* kMachine = R"({
  "clock": {"step_ms": 100}, "bus": {"delay_us": 500},
  "codes": {"0x00800000": {"trace": [[0, 1], [20000, {"status": 9}], [30000, 1]]},
            "0x00820000": {"trace": [[0, 3000], [20000, {"status": 9}], [30000, 3100]]},
            "0x00822003": {"trace": [[0, 1000], [20000, {"status": 9}]]},
            "0x00200000": {"trace": [[0, 0], [8000, 1], [20000, {"status": 9}], [30000, 0]]},
            "0x00260003": {"trace": [[0, 1], [20000, {"status": 9}]]}}})";
constexpr uint32_t kTemperature = 0x14170111;
constexpr uint32_t kFan = 0x14170311;

TEST(Sampler, FollowsWhatTheDeviceHas) {
  using namespace std::chrono_literals;
  const std::string file = testing::TempDir() + "sampler." + std::to_string(getpid()) + ".json";
  std::ofstream(file) << kMachine;
  testing::internal::CaptureStderr();
  Store store(0.01);
  auto latest = store.latest();
  {
    kova_host::WorkerSettings worker;
    worker.program = KOVA_EXPORTER_PROGRAM;
    const Sampler sampler({.module = "", .simulate = true, .machine = file}, store, worker, 0ns);
    for (int i = 0; i < 1000 && (latest->list->number < 3 || !latest->error.empty()); ++i) {
      std::this_thread::sleep_for(10ms);
      latest = store.latest();
    }
  }
  const std::string log = testing::internal::GetCapturedStderr();
  EXPECT_TRUE(
      std::regex_match(log, std::regex("kova-exporter: info: the device has 17 items\n"
                                       "kova-exporter: info: the device has 37 items\n"
                                       "kova-exporter: warn: no item of the device can be read\n"
                                       "(kova-exporter: warn: no device found: .*\n)+"
                                       "kova-exporter: info: the device has 17 items\n"
                                       "kova-exporter: warn: the device answers\n")))
      << log;
  EXPECT_EQ(store.failure(), "");
  EXPECT_EQ(latest->list->number, 3U);
  EXPECT_TRUE(latest->duration > 0 && latest->duration < 60);
  EXPECT_EQ(latest->readings.at(kTemperature).number(), 37);
  EXPECT_EQ(latest->last_success.at(kTemperature), latest->time);
  EXPECT_LT(latest->last_success.at(kFan), latest->time);  // it answered before
  EXPECT_EQ(store.history({kTemperature}, 0, 10000).series[kTemperature].front(), 27);
  EXPECT_EQ(store.history_ids(), (std::vector<uint32_t>{kTemperature, kFan}));
  std::filesystem::remove(file);
}

}  // namespace
}  // namespace kova_exporter
