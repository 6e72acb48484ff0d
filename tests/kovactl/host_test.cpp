// The host library where the program does not reach: libraries that cannot be used, counts, words
// that are near each other, numbers that a device can hold.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>

#include "tools/host/diagnosis.h"
#include "tools/host/inventory.h"
#include "tools/host/nearest.h"
#include "tools/host/write_value.h"

namespace kova_host {
namespace {

TEST(Diagnosis, LibrariesThatCannotBeUsed) {
  const std::string text_file = testing::TempDir() + "no_library.so";
  std::ofstream(text_file) << "no library";
  const std::string other_library = "libjansson.so.4";
  const std::pair<std::vector<const char*>, std::string> cases[] = {
      {{"/none/a.so", "/none/b.so"}, "neither /none/a.so nor /none/b.so is there"},
      {{text_file.c_str(), "/none/b.so"}, "cannot load " + text_file + ": file too short"},
      {{"/none/a.so", other_library.c_str()}, "has no entry KovaDeviceGetValue"},
  };
  for (const auto& [files, cause] : cases) {
    const DeviceDiagnosis diagnosis = diagnose_device(files);
    EXPECT_NE(cause_of_no_device(diagnosis).find(cause), std::string::npos)
        << cause_of_no_device(diagnosis);
    EXPECT_FALSE(diagnosis.any_present());
  }
  std::filesystem::remove(text_file);
}

TEST(Inventory, CountsInstancesByTheFirstRuleThatHolds) {
  const InstanceRule ports{"port", 8, 1, 1, {{1, 1, 8}, {2, 1, 4}}};
  const InstanceRule modules{"module", 255, 256, 1, {{3, std::nullopt, 0}}};
  const auto counted = [](const InstanceRule& rule, std::vector<std::optional<uint32_t>> words) {
    return count_instances(rule, [&words](uint32_t code) { return words.at(code); });
  };
  EXPECT_EQ(counted(ports, {{}, 1, 1}), 8U);
  EXPECT_EQ(counted(ports, {{}, 2, 1}), 4U);
  EXPECT_EQ(counted(ports, {{}, {}, 1}), 4U);
  EXPECT_EQ(counted(ports, {{}, 0, 0}), 0U);
  EXPECT_EQ(counted(modules, {{}, {}, {}, 16}), 16U);
  EXPECT_EQ(counted(modules, {{}, {}, {}, 4000000000}), 255U);
  EXPECT_EQ(counted(modules, {{}, {}, {}, {}}), 0U);
}

TEST(Nearest, FindsSlipsOfThePenOnly) {
  const std::vector<std::string> words = {"list", "watch", "set", "PoE 1 power"};
  const std::pair<const char*, const char*> cases[] = {
      {"lsit", "list"}, {"lst", "list"}, {"WATHC", "watch"}, {"poe 1 pwr", "PoE 1 power"},
      {"x", ""},        {"metrics", ""}, {"", ""},           {"ste", "set"},
  };
  for (const auto& [typed, meant] : cases) {
    EXPECT_EQ(nearest(typed, words), meant) << typed;
  }
}

TEST(WriteValue, ArrivesAsTheNearestCountThatTheDeviceCanHold) {
  for (const double scale : {0.1, 0.0001}) {
    const double factor = std::round(1 / scale);
    for (int count = -20000; count <= 20000; ++count) {
      const double sent = nearest_held(count * scale, scale);
      // What the module does with it.
      ASSERT_EQ(static_cast<int>(std::trunc(sent * factor)), count) << count * scale;
      ASSERT_NEAR(sent, count * scale, 1e-9);
    }
  }
}

}  // namespace
}  // namespace kova_host
