// The checks that no item is forgotten: rows and packages that do not fit each other end the build.
#include "module/items/item_list.h"

#include <gtest/gtest.h>

#include <array>
#include <stdexcept>

namespace {

using catalogue::Kind;
using catalogue::Package;
using catalogue::Role;
using catalogue::Row;
using catalogue::Shape;
using catalogue::Sheet;

constexpr unsigned int kGroup = 0x14160600;
constexpr unsigned int kItem = 0x14160601;
constexpr Shape kReading{.role = Role::kReading, .kind = Kind::kInteger};

template <typename Call>
std::string refusal(const Call& call) {
  try {
    call();
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "";
}

// Of a sheet with the presence item and this row, in the packages of these headings.
std::string refusal_of(const Row& row, std::vector<unsigned int> headings = {kGroup}) {
  const std::array rows{Row{.id = 0x14160001, .name = "Available", .code = 0x600008}, row};
  std::vector<Package> packages;
  packages.reserve(headings.size());
  for (const unsigned int heading : headings) {
    packages.push_back({.id = heading});
  }
  const Sheet sheet{.name = "PIC",
                    .title = "",
                    .id = 0x14160000,
                    .presence_code = 0x600008,
                    .rows = rows,
                    .packages = packages};
  return refusal([&] { item_list::packages_of(sheet); });
}

TEST(ItemList, RefusesItemsThatNothingWouldShow) {
  EXPECT_EQ(refusal_of({.id = kItem, .name = "Item", .code = 1, .as = kReading}), "");
  EXPECT_EQ(refusal_of({.id = kItem, .name = "Heading"}), "");
  EXPECT_EQ(refusal_of({.id = kItem, .code = 1}), "");  // a view that only the module uses
  const std::string item = "item 0x14160601 \"Item\": ";
  EXPECT_EQ(refusal_of({.id = kItem, .name = "Item", .code = 1}),
            item + "has a code, but no role (column `as`): nothing would show it");
  EXPECT_EQ(refusal_of({.id = kItem, .name = "Item", .code = 1, .as = {.role = Role::kReading}}),
            item + "has no kind (column `as`)");
  const Row whole{.id = kItem, .name = "Item", .code = 1, .as = kReading};
  EXPECT_EQ(refusal_of(whole, {0x14160700}),
            item + "stands in 0 packages of its family's sheet, not in one");
  EXPECT_EQ(refusal_of(whole, {kGroup, kGroup}),
            item + "stands in 2 packages of its family's sheet, not in one");
  EXPECT_EQ(refusal_of({.id = kItem, .code = 1, .as = kReading}, {}),
            "item 0x14160601 \"\": stands in 0 packages of its family's sheet, not in one");
}

TEST(ItemList, RefusesOptionsThatAreNone) {
  const auto options = [](std::string_view list) {
    return refusal([&] { item_list::options_of({.id = kItem, .options = list}); });
  };
  EXPECT_EQ(options("0=OFF|\n1=ON"), "");
  EXPECT_EQ(options("0=OFF|ON"), "item 0x14160601 \"\": an option without a value");
  EXPECT_EQ(options("off=OFF"), "\"off\" is no number");
  EXPECT_EQ(refusal([] { item_list::offered_of({.id = kItem, .offered = "1||2"}); }),
            "\"\" is no number");
}

}  // namespace
