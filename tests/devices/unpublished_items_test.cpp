// Items that stand in no document make no element, and leave no stale one with the caller; but they
// have names.
#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "devices/addon_board/device_trk7000.h"
#include "devices/gsensor/device_gsensor.h"
#include "devices/pic/device_pic.h"
#include "devices/poe/device_poe.h"

namespace {

TEST(UnpublishedItems, MakeNoElement) {
  const struct {
    Status (*build)(unsigned int, void*, json_t**);
    unsigned int id;
  } cases[] = {
      {Device_PoE::create_json_element, 0x14140001},
      {Device_PoE::create_json_element, 0x14140A04},
      {Device_GSensor::create_json_element, 0x14150761},
      {Device_PIC::create_json_element, 0x14160001},
      {Device_PIC::create_json_element, 0x14160710},
      {Device_PIC::create_json_element, 0x1416071C},
      {Device_PIC::create_json_element, 0x14160731},
      {Device_PIC::create_json_element, 0x14160741},
      {Device_TRK7000::create_json_element, 0x14170001},
  };
  for (const auto& [build, id] : cases) {
    unsigned int raw = 1;
    json_t* element = reinterpret_cast<json_t*>(&raw);
    EXPECT_EQ(build(id, &raw, &element), IOT_STATUS_JSON_ERROR) << std::hex << id;
    EXPECT_EQ(element, nullptr) << std::hex << id;
  }
}

TEST(UnpublishedItems, HaveNamesAndTheUnitsOfTheirGroups) {
  const struct {
    std::string (*name_of)(unsigned int);
    std::string (*unit_of)(unsigned int);
    std::vector<std::tuple<unsigned int, std::string, std::string>> headings;
  } families[] = {
      {Device_GSensor::get_name_by_id,
       Device_GSensor::get_unit_by_id,
       {{0x14150001, "Available", ""},
        {0x14150700, "Settings", ""},
        {0x14150710, "Modes", ""},
        {0x14150720, "Offset settings", ""},
        {0x14150730, "Data rates", ""},
        {0x14150740, "", ""},
        {0x14150900, "Data", "G"}}},
      {Device_PIC::get_name_by_id,
       Device_PIC::get_unit_by_id,
       {{0x14160001, "Available", ""},
        {0x14160600, "Information", ""},
        {0x14160710, "Settings", ""},
        {0x14160720, "Default settings", ""},
        {0x14160800, "Real-time status", ""}}},
      {Device_TRK7000::get_name_by_id,
       Device_TRK7000::get_unit_by_id,
       {{0x14170001, "Available", ""},
        {0x14170100, "Temperatures", "Cel"},
        {0x14170110, "VTIN temperatures", ""},
        {0x14170120, "BT temperatures", ""},
        {0x14170300, "Fan speeds", "RPM"},
        {0x14170310, "Onboard fan speeds", ""},
        {0x14170600, "Information", ""}}},
  };
  for (const auto& family : families) {
    for (const auto& [id, name, unit] : family.headings) {
      EXPECT_EQ(family.name_of(id), name) << std::hex << id;
      EXPECT_EQ(family.unit_of(id), unit) << std::hex << id;
    }
  }
}

}  // namespace
