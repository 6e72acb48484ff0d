// The loader's two paths, and what it does with symbols.
#include "framework/device_library.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include "tests/support/wrapped_loader.h"

namespace {

using Paths = std::vector<std::string>;
const std::string kFirst = "/usr/lib/libKOVADevice.so";
const std::string kSecond = "/usr/lib64/libKOVADevice.so";

TEST(DeviceLibrary, TriesTheTwoAbsolutePathsInOrder) {
  const struct {
    Paths installed;
    Paths tried;
    bool found;
  } cases[] = {
      {{kFirst, kSecond}, {kFirst}, true},
      {{kSecond}, {kFirst, kSecond}, true},
      {{"/opt/lib/libKOVADevice.so", "libKOVADevice.so"}, {kFirst, kSecond}, false},
  };
  for (const auto& [installed, tried, found] : cases) {
    auto& loader = wrapped_loader::state() = {.openable = installed};
    EXPECT_EQ(LibLoad("libKOVADevice") != nullptr, found) << installed.front();
    EXPECT_EQ(loader.tried, tried);
    for (const int flags : loader.flags) {
      EXPECT_EQ(flags, 0x101);  // lazy and global
    }
  }
}

TEST(DeviceLibrary, TheFirstPathsFailureDoesNotSurfaceAtTheHost) {
  wrapped_loader::state() = {.openable = {kSecond}};
  ASSERT_NE(LibLoad("libKOVADevice"), nullptr);
  EXPECT_EQ(dlerror(), nullptr);
}

TEST(DeviceLibrary, ResolvesAndClosesLibraries) {
  void* handle = dlopen("libm.so.6", RTLD_LAZY);
  ASSERT_NE(handle, nullptr);
  EXPECT_NE(LibGetSymbol(handle, "cos"), nullptr);
  EXPECT_EQ(LibGetSymbol(handle, "no_such_symbol_here"), nullptr);
  EXPECT_EQ(LibFree(handle), 0);
}

TEST(DeviceLibrary, StringCopyCopiesTheEnd) {
  char copy[] = "xxxxxx";
  EXPECT_EQ(StringCopy(copy, "abc"), copy);
  EXPECT_EQ(std::string(copy, sizeof copy), std::string("abc\0xx\0", 7));
}

}  // namespace
