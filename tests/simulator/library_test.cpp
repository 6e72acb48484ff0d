// The built shared library, as a host loads it: the path it answers for, its one-time loading and
// what it does with a bad description.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <utility>

namespace {

// Loads the library afresh with the given KOVA_SIM_MACHINE; null: not set.
class Loaded {
 public:
  explicit Loaded(const char* machine) {
    if (machine == nullptr) {
      unsetenv("KOVA_SIM_MACHINE");
    } else {
      setenv("KOVA_SIM_MACHINE", machine, 1);
    }
    handle.reset(dlopen(SIMULATOR_LIBRARY, RTLD_NOW | RTLD_GLOBAL));
    EXPECT_NE(handle, nullptr);
    get = reinterpret_cast<decltype(get)>(dlsym(handle.get(), "KovaDeviceGetValue"));
    set = reinterpret_cast<decltype(set)>(dlsym(handle.get(), "KovaDeviceSetValue"));
    error = reinterpret_cast<decltype(error)>(dlsym(handle.get(), "KovaSimulatorError"));
    recorded_time =
        reinterpret_cast<decltype(recorded_time)>(dlsym(handle.get(), "KovaSimulatorRecordedTime"));
  }

  std::unique_ptr<void, int (*)(void*)> handle{nullptr, dlclose};
  std::uint32_t (*get)(std::uint32_t, std::uint32_t*) = nullptr;
  std::uint32_t (*set)(std::uint32_t, std::uint32_t) = nullptr;
  const char* (*error)() = nullptr;
  std::uint64_t (*recorded_time)() = nullptr;
};

TEST(SimulatorLibrary, AnswersForThePathOfTheRealLibrary) {
  const Loaded library(nullptr);
  void* real = dlopen("/usr/lib/libKOVADevice.so", RTLD_LAZY | RTLD_GLOBAL);
  ASSERT_NE(real, nullptr) << dlerror();
  EXPECT_EQ(dlsym(real, "KovaDeviceGetValue"), reinterpret_cast<void*>(library.get));
  EXPECT_EQ(dlsym(real, "KovaDeviceSetValue"), reinterpret_cast<void*>(library.set));
  dlclose(real);
}

TEST(SimulatorLibrary, AnswersFromTheBuiltinMachine) {
  for (const char* machine : {static_cast<const char*>(nullptr), ""}) {
    const Loaded library(machine);
    EXPECT_EQ(library.error(), nullptr);
    std::uint32_t word = 0;
    EXPECT_EQ(library.get(0xA00000, &word), 0U);
    EXPECT_EQ(word, 2U);
    EXPECT_EQ(library.get(0xA00000, nullptr), 0xE0000004U);
    EXPECT_EQ(library.set(0x270000, 0), 0U);
  }
}

// A recording that is walked through: forwards, backwards, and without waiting for its delays.
TEST(SimulatorLibrary, StandsAtTheTimeThatTheHostSets) {
  const std::string path = testing::TempDir() + "walked.json";
  std::ofstream(path) << R"({"bus": {"delay_us": 10000000}, "clock": {"step_ms": 1000},
    "trace": {"moments": [[0, "0x1", 10], [1000, "0x1", 11]], "seconds": 3}})";
  const Loaded library(path.c_str());
  const auto set_time = reinterpret_cast<void (*)(std::uint64_t)>(
      dlsym(library.handle.get(), "KovaSimulatorSetTime"));
  EXPECT_EQ(library.recorded_time(), 3000U);
  const std::pair<std::uint64_t, std::uint32_t> cases[] = {
      {999, 10}, {1000, 11}, {0, 10}, {2999, 11}};
  for (const auto& [time, expected] : cases) {
    set_time(time);
    for (int call = 0; call < 2; ++call) {
      std::uint32_t word = 0;
      EXPECT_EQ(library.get(1, &word), 0U);
      EXPECT_EQ(word, expected) << time;
    }
  }
}

// What is known of a code after the recording is known again, by whatever it comes to be known.
TEST(SimulatorLibrary, TellsWhichWordsWereBlanked) {
  const std::string base = testing::TempDir() + "blanked.json";
  const std::string path = testing::TempDir() + "unblanked.json";
  std::ofstream(base) << R"({"redacted": ["0x10..0xFFFFFFFF", "0x3", "0x2..0x3"],
    "trace": [[0, "0x1", 1, "0x2", 0, "0x3", 0, "0x5", 0, "0x10", 0, "0xFFFFFFFF", 0]]})";
  std::ofstream(path) << R"({"base": "blanked.json", "copy": {"0x20": "0x2"},
    "trace": [[0, "0x5", 7]], "redacted": ["0x4..0x4"],
    "codes": {"0x3": 1, "0x4": 1, "0x10": {"delay_us": 1}, "0x2": {"write": true}}})";
  const Loaded library(path.c_str());
  const auto is_redacted = reinterpret_cast<std::uint32_t (*)(std::uint32_t)>(
      dlsym(library.handle.get(), "KovaSimulatorIsRedacted"));
  ASSERT_EQ(library.error(), nullptr);
  const std::pair<std::uint32_t, std::uint32_t> cases[] = {
      {1, 0}, {2, 1}, {3, 0}, {4, 0}, {5, 0}, {6, 0}, {0x10, 1}, {0x20, 1}, {0xFFFFFFFF, 1}};
  for (const auto& [code, expected] : cases) {
    EXPECT_EQ(is_redacted(code), expected) << code;
  }
  EXPECT_EQ(library.set(2, 5), 0U);
  EXPECT_EQ(is_redacted(2), 0U);
}

TEST(SimulatorLibrary, ABadDescriptionAnswersNothingAndIsToldOnce) {
  const std::string path = testing::TempDir() + "bad_machine.json";
  std::ofstream(path) << R"({"base": "builtin", "codes": {"0x1": {"valeu": 1}}})";
  const std::string reason = path + ":1: codes.0x1.valeu: unknown key";
  {
    testing::internal::CaptureStderr();  // which is stderr for a library loaded from here on
    const Loaded library(path.c_str());
    std::uint32_t word = 77;
    EXPECT_EQ(library.get(0xA00000, &word), 0xE0000005U);
    EXPECT_EQ(library.set(0x270000, 0), 0xE0000005U);
    EXPECT_EQ(word, 77U);
    const std::string told = testing::internal::GetCapturedStderr();
    EXPECT_EQ(told.find("libKOVADeviceSim: " + reason), 0U) << told;
    EXPECT_EQ(told.find('\n'), told.size() - 1) << told;
  }
  testing::internal::CaptureStderr();
  const Loaded asked(path.c_str());
  EXPECT_EQ(asked.recorded_time(), 0U);
  ASSERT_NE(asked.error(), nullptr);
  EXPECT_EQ(std::string(asked.error()).find(reason), 0U) << asked.error();
  EXPECT_EQ(asked.get(0xA00000, nullptr), 0xE0000005U);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(SimulatorLibrary, LeavesNothingBehindThatAForkWouldCall) {
  std::uint32_t word = 0;
  EXPECT_EQ(Loaded("").get(0xA00000, &word), 0U);
  const pid_t child = fork();
  if (child == 0) {
    _exit(0);
  }
  int status = 1;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
}

TEST(SimulatorLibrary, FindsShippedMachinesByTheirNames) {
  std::uint32_t word = 0;
  EXPECT_EQ(Loaded("sixteen-modules").get(0xA00000, &word), 0U);
  EXPECT_EQ(word, 16U);
  EXPECT_STREQ(Loaded("seventeen-modules").error(), "seventeen-modules: cannot be read (ENOENT)");
  // A path is no name.
  EXPECT_STREQ(Loaded("./sixteen-modules").error(), "./sixteen-modules: cannot be read (ENOENT)");
}

TEST(SimulatorLibrary, AnUnreadableFileIsRefused) {
  EXPECT_STREQ(Loaded("/nowhere/m.json").error(), "/nowhere/m.json: cannot be read (ENOENT)");
  EXPECT_STREQ(Loaded("/tmp").error(), "/tmp: cannot be read (EISDIR)");
  // Nothing is waited for, and nothing sees that it is opened.
  const std::string fifo = testing::TempDir() + "fifo." + std::to_string(getpid());
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  for (const std::string& file : {fifo, std::string("/dev/zero"), std::string("/proc/kmsg"),
                                  std::string("/proc/self/status")}) {
    const std::string reason = file + ": cannot be read (no regular file)";
    EXPECT_EQ(Loaded(file.c_str()).error(), reason);
  }
  unlink(fifo.c_str());
  const std::string path = testing::TempDir() + "large_machine.json";
  std::ofstream(path).close();
  std::filesystem::resize_file(path, (16U << 20U) + 1);
  EXPECT_EQ(Loaded(path.c_str()).error(), path + ": cannot be read (larger than 16 MiB)");
  std::filesystem::resize_file(path, 16U << 20U);
  EXPECT_EQ(std::string(Loaded(path.c_str()).error()).find(path + ":1:"), 0U);  // just no JSON
}

}  // namespace
