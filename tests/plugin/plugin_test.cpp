// The plug-in as an agent sees it: loaded with dlopen, on the simulated reference machine.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "framework/json_owner.h"
#include "include/kova_iot.h"
#include "tests/support/documents.h"

extern "C" uint32_t status_seen_from_c(void);

namespace {

// A host: the seven functions, resolved by their plain names.
class Host {
 public:
  Host() {
    setenv("KOVA_SIM_MACHINE", KOVA_REFERENCE_MACHINE, 1);
    device_ = dlopen(KOVA_SIMULATOR, RTLD_NOW | RTLD_GLOBAL);
    plugin_ = dlopen(KOVA_PLUGIN, RTLD_NOW | RTLD_LOCAL);
    if (device_ == nullptr || plugin_ == nullptr) {
      throw std::runtime_error(dlerror());
    }
  }

  template <typename Function>
  Function* resolve(const char* name) const {
    return reinterpret_cast<Function*>(dlsym(plugin_, name));
  }

 private:
  void* device_;
  void* plugin_;
};

TEST(Plugin, StatusesAreTheSameFromC) {
  EXPECT_EQ(status_seen_from_c(), IOT_STATUS_UNDEFINED_ITEM);
}

TEST(Plugin, ASessionOnTheReferenceMachine) {
  const Host host;
  EXPECT_EQ(host.resolve<decltype(KovaIoTGetModuleID)>("KovaIoTGetModuleID")(), 20U);
  const JsonOwner document(json_object());
  EXPECT_EQ(
      host.resolve<decltype(KovaIoTGetMDCapability)>("KovaIoTGetMDCapability")(document.get()),
      IOT_STATUS_NOT_READY);
  ASSERT_EQ(host.resolve<decltype(KovaIoTInitialize)>("KovaIoTInitialize")(), IOT_STATUS_SUCCESS);
  ASSERT_EQ(
      host.resolve<decltype(KovaIoTGetMDCapability)>("KovaIoTGetMDCapability")(document.get()),
      IOT_STATUS_SUCCESS);
  clear_base_times(document.get());
  EXPECT_EQ(first_difference(document.get(), reference_document().get()), "");
  EXPECT_EQ(host.resolve<decltype(KovaIoTSetMDEventHandler)>("KovaIoTSetMDEventHandler")(nullptr),
            IOT_STATUS_SUCCESS);

  const auto get = host.resolve<decltype(KovaIoTGetMDValue)>("KovaIoTGetMDValue");
  const JsonOwner speed(json_integer(-1));
  EXPECT_EQ(get(0x14170312, speed.get()), IOT_STATUS_SUCCESS);
  EXPECT_EQ(json_integer_value(speed.get()), 2340);
  const JsonOwner part_number(json_string(""));
  EXPECT_EQ(get(0x14181101, part_number.get()), IOT_STATUS_SUCCESS);
  EXPECT_STREQ(json_string_value(part_number.get()), "VLX-M4S0-AGN3O5IJ-C2");
  const JsonOwner reading(json_real(1e9));
  EXPECT_EQ(get(0x14150903, reading.get()), IOT_STATUS_READ_FAILED);  // filled all the same
  EXPECT_EQ(json_real_value(reading.get()), 10001 * 0.0001);

  const auto set = host.resolve<decltype(KovaIoTSetMDValue)>("KovaIoTSetMDValue");
  const JsonOwner one(json_integer(1));
  EXPECT_EQ(set(0x14140B01, one.get()), IOT_STATUS_SUCCESS);  // on already: nothing is written
  EXPECT_NE(set(0x14140B02, one.get()), IOT_STATUS_SUCCESS);  // the machine takes no writes
  EXPECT_EQ(set(0x14160711, one.get()), IOT_STATUS_WRITE_FAILED);
  EXPECT_EQ(set(0x14170312, one.get()), IOT_STATUS_UNSUPPORTED);
  EXPECT_EQ(host.resolve<decltype(KovaIoTUninitialize)>("KovaIoTUninitialize")(),
            IOT_STATUS_SUCCESS);
  EXPECT_EQ(get(0x14170312, speed.get()), IOT_STATUS_NOT_READY);
}

}  // namespace
