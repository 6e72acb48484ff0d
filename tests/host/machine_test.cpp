// A machine's items as a whole: why there are none, what has changed.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>

#include "tests/host/items.h"
#include "tools/host/model/selection.h"
#include "tools/host/record/comparison.h"
#include "tools/host/record/recording.h"
#include "tools/host/session/diagnosis.h"
#include "tools/host/session/inventory.h"
#include "tools/host/session/locations.h"

namespace {
bool has_proc = true;
}  // namespace

// In the C library's place: a machine whose /proc is not mounted. By another name here, since some
// headers define readlink() themselves.
extern "C" ssize_t readlink_without_proc(const char* path, char* target,
                                         size_t size) __asm__("readlink");
extern "C" ssize_t readlink_without_proc(const char* path, char* target, size_t size) {
  if (!has_proc) {
    errno = ENOENT;
    return -1;
  }
  return syscall(SYS_readlink, path, target, size);
}

namespace kova_host {
namespace {

TEST(Diagnosis, LibrariesThatCannotBeUsed) {
  const std::string text_file = testing::TempDir() + "no_library.so";
  std::ofstream(text_file) << "no library";
  const std::string fifo = testing::TempDir() + "fifo." + std::to_string(getpid());
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  const std::string other_library = "libjansson.so.4";
  const std::pair<std::vector<const char*>, std::string> cases[] = {
      {{"/none/a.so", "/none/b.so"}, "neither /none/a.so nor /none/b.so is there"},
      {{text_file.c_str(), "/none/b.so"}, "cannot load " + text_file + ": file too short"},
      {{fifo.c_str(), "/none/b.so"}, "cannot load " + fifo + ": no regular file"},
      {{"/none/a.so", other_library.c_str()}, "has no entry KovaDeviceGetValue"},
  };
  for (const auto& [files, cause] : cases) {
    const DeviceDiagnosis diagnosis = diagnose_device(files);
    EXPECT_NE(cause_of_no_device(diagnosis).find(cause), std::string::npos)
        << cause_of_no_device(diagnosis);
    EXPECT_FALSE(diagnosis.any_present());
  }
  std::filesystem::remove(text_file);
  std::filesystem::remove(fifo);
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
  EXPECT_EQ(counted(modules, {{}, {}, {}, 4000000000}), 0U);  // garbled
  EXPECT_EQ(counted(modules, {{}, {}, {}, {}}), 0U);
}

TEST(Recording, PrivateCodesAreThoseOfEveryMachine) {
  const std::string codes = private_codes();
  EXPECT_TRUE(codes.starts_with("0xA00011..0xA00015,0xA00021..0xA00028,0xA00111..")) << codes;
  EXPECT_TRUE(codes.ends_with(",0xA0FE21..0xA0FE28,0xB0001C..0xB0001C")) << codes;
}

TEST(Locations, WithoutProcNothingIsLookedForBesideTheProgram) {
  namespace fs = std::filesystem;
  // Where the working folder's own would be, if that were taken for the program's.
  const fs::path folder = fs::path(testing::TempDir()) / ("locations." + std::to_string(getpid()));
  fs::create_directories(folder / "program/itself");
  fs::create_directories(folder / "module");
  std::ofstream(folder / "module/libKovaIoT.so") << "anybody's";
  const fs::path before = fs::current_path();
  fs::current_path(folder / "program/itself");
  has_proc = false;
  EXPECT_EQ(module_library(), "libKovaIoT.so");
  EXPECT_TRUE(shipped_machines().empty());
  has_proc = true;
  fs::current_path(before);
  fs::remove_all(folder);
}

TEST(Selection, TellsThatAWholeFamilyIsAbsent) {
  for (const char* item : {"SDRAM/SDRAM0/Temperature", "SDRAM/SDRAM15/Temperature"}) {
    EXPECT_EQ(refusal([&] { select_one({}, item); }),
              "'" + std::string(item) + "' is an item of SDRAM, and this machine has none such");
  }
}

TEST(Selection, TellsWhatIsNoPattern) {
  EXPECT_EQ(refusal([] { select_one({}, "PoE [12] power"); }),
            "no item 'PoE [12] power': * and ? are wildcards, brackets are not");
  EXPECT_EQ(refusal([] { select_one({}, std::string(129, '*')); }),
            "an item's name has at most 128 bytes, not 129");
}

TEST(Comparison, TellsReadingsThatAppearAndDisappear) {
  const auto listed = [](uint32_t id, const Reading& reading) {
    return ListedItem{item_of(id, Role::reading, ValueKind::real), reading};
  };
  Reading blank = kAbsent;  // in a recording that was handed on
  blank.redacted = true;
  const Comparison result = compare({listed(1, good(2.0)), listed(2, kAbsent), listed(3, failed(5)),
                                     listed(4, good(2.0)), listed(6, good(2.0)), listed(7, blank)},
                                    {listed(5, kAbsent), listed(1, kAbsent), listed(2, good(2.0)),
                                     listed(3, failed(6)), listed(6, blank), listed(7, good(2.0))},
                                    false);
  std::string told;
  for (const Change& change : result.changes) {
    told += change.item().name + " " + std::string(change_name(change.kind)) + "; ";
  }
  EXPECT_EQ(told, "n5 new; n1 changed; n2 changed; n3 fails otherwise; n4 vanished; ");
  EXPECT_EQ(result.compared, 3U);
  EXPECT_EQ(result.redacted, 2U);
}

}  // namespace
}  // namespace kova_host
