// The built plug-in as an agent sees it, loaded with dlopen, on the simulated reference machine:
// one session, and a long time of loading, starting, stopping and unloading.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "framework/json_owner.h"
#include "include/kova_iot.h"
#include "tests/faults/allocation_faults.h"
#include "tests/support/documents.h"

extern "C" uint32_t status_seen_from_c(void);

namespace {

using allocation_faults::live_blocks;
using allocation_faults::refuse_each_block;
using allocation_faults::Shortage;

constexpr unsigned int kRounds = 30;

class Plugin {
 public:
  Plugin() { load(); }
  ~Plugin() { unload(); }
  Plugin(const Plugin&) = delete;
  Plugin& operator=(const Plugin&) = delete;

  bool load() {
    handle_ = dlopen(KOVA_PLUGIN, RTLD_NOW | RTLD_LOCAL);
    return handle_ != nullptr;
  }
  void unload() {
    if (handle_ != nullptr) {
      dlclose(handle_);
    }
    handle_ = nullptr;
  }

  template <typename Result, typename... Arguments>
  Result call(const char* name, Arguments... arguments) const {
    using Function = Result (*)(Arguments...);
    return reinterpret_cast<Function>(dlsym(handle_, name))(arguments...);
  }

 private:
  void* handle_ = nullptr;
};

class PluginRounds : public ::testing::Test {
 public:
  PluginRounds() {
    setenv("KOVA_SIM_MACHINE", KOVA_REFERENCE_MACHINE, 1);
    // The simulator stands in for the device library, and stays mapped as that does.
    EXPECT_NE(dlopen(KOVA_SIMULATOR, RTLD_NOW | RTLD_GLOBAL), nullptr);
    reference = reference_document();
    for_each_item(reference.get(), [this](uint32_t id, json_t*) { ids.push_back(id); });
  }

 protected:
  // What a host may do between loading and unloading. Its document outlives the module's.
  void use(const Plugin& plugin) {
    const JsonOwner value(json_integer(1));
    const JsonOwner document(json_object());
    ASSERT_EQ(plugin.call<uint32_t>("KovaIoTInitialize"), IOT_STATUS_SUCCESS);
    ASSERT_EQ(plugin.call<uint32_t>("KovaIoTInitialize"), IOT_STATUS_SUCCESS);
    ASSERT_EQ(plugin.call<uint32_t>("KovaIoTGetMDCapability", document.get()), IOT_STATUS_SUCCESS);
    for (const uint32_t id : ids) {
      plugin.call<uint32_t>("KovaIoTGetMDValue", id, value.get());
    }
    for (const uint32_t id : {0x14140B01U, 0x14150711U, 0x14160711U, 0x14170111U}) {
      plugin.call<uint32_t>("KovaIoTSetMDValue", id, value.get());
    }
    ASSERT_EQ(plugin.call<uint32_t>("KovaIoTUninitialize"), IOT_STATUS_SUCCESS);
    clear_base_times(document.get());
    ASSERT_EQ(json_equal(document.get(), reference.get()), 1);
  }

  JsonOwner reference;
  std::vector<uint32_t> ids;
};

TEST_F(PluginRounds, ASessionHasTheStatusesOfTheHeader) {
  EXPECT_EQ(status_seen_from_c(), IOT_STATUS_UNDEFINED_ITEM);
  const Plugin plugin;
  const JsonOwner value(json_integer(1));
  const auto get = [&](uint32_t id) {
    return plugin.call<uint32_t>("KovaIoTGetMDValue", id, value.get());
  };
  const auto set = [&](uint32_t id) {
    return plugin.call<uint32_t>("KovaIoTSetMDValue", id, value.get());
  };
  EXPECT_EQ(plugin.call<uint32_t>("KovaIoTGetModuleID"), 20U);
  EXPECT_EQ(get(0x14170312), IOT_STATUS_NOT_READY);
  ASSERT_EQ(plugin.call<uint32_t>("KovaIoTInitialize"), IOT_STATUS_SUCCESS);
  EXPECT_EQ(plugin.call<uint32_t>("KovaIoTSetMDEventHandler", nullptr), IOT_STATUS_SUCCESS);
  EXPECT_EQ(set(0x14140B01), IOT_STATUS_SUCCESS);  // on already: nothing is written
  EXPECT_NE(set(0x14140B02), IOT_STATUS_SUCCESS);  // the machine takes no writes
  EXPECT_EQ(set(0x14160711), IOT_STATUS_WRITE_FAILED);
  EXPECT_EQ(set(0x14170312), IOT_STATUS_UNSUPPORTED);
  EXPECT_EQ(get(0x14170312), IOT_STATUS_SUCCESS);
  EXPECT_EQ(json_integer_value(value.get()), 2340);
  EXPECT_EQ(plugin.call<uint32_t>("KovaIoTUninitialize"), IOT_STATUS_SUCCESS);
}

TEST_F(PluginRounds, StartedAndStoppedWithoutGrowth) {
  const Plugin plugin;
  use(plugin);
  const size_t blocks = live_blocks();
  for (unsigned int round = 0; round < kRounds && !HasFatalFailure(); ++round) {
    use(plugin);
    ASSERT_EQ(live_blocks(), blocks) << "round " << round;
  }
}

TEST_F(PluginRounds, LoadedAndUnloadedWithoutGrowth) {
  use(Plugin());  // the simulator keeps its counts of calls from the first time on
  const size_t blocks = live_blocks();
  for (unsigned int round = 0; round < kRounds && !HasFatalFailure(); ++round) {
    use(Plugin());
    ASSERT_EQ(live_blocks(), blocks) << "round " << round;
    ASSERT_EQ(dlopen(KOVA_PLUGIN, RTLD_NOW | RTLD_NOLOAD), nullptr) << "still mapped";
  }
}

TEST_F(PluginRounds, LoadedWithTooLittleMemoryItRefusesToStart) {
  use(Plugin());
  const size_t blocks = live_blocks();
  for (const auto shortage : {Shortage::kPassing, Shortage::kLasting}) {
    Plugin plugin;
    plugin.unload();
    const auto load = [&] { return plugin.load(); };
    const unsigned int refused =
        refuse_each_block(shortage, load, [&](unsigned int n, bool loaded) {
          const JsonOwner value(json_integer(1));
          ASSERT_TRUE(loaded) << n;
          EXPECT_EQ(plugin.call<uint32_t>("KovaIoTInitialize"), IOT_STATUS_NOT_READY) << n;
          EXPECT_EQ(plugin.call<uint32_t>("KovaIoTGetMDValue", 0x14140B01U, value.get()),
                    IOT_STATUS_NOT_READY)
              << n;
          plugin.unload();
          use(Plugin());
        });
    EXPECT_GT(refused, 0U);
  }
  EXPECT_EQ(live_blocks(), blocks);
}

}  // namespace
