// Items that stand in no document make no element, and leave no stale one with the caller; but they
// have names.
#include <gtest/gtest.h>

#include <string>

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

// The headings that no package is named after.
TEST(UnpublishedItems, HaveNamesToo) {
  const struct {
    std::string (*name_of)(unsigned int);
    unsigned int id;
    const char* name;
  } headings[] = {
      {Device_GSensor::get_name_by_id, 0x14150001, "Available"},
      {Device_GSensor::get_name_by_id, 0x14150710, "Modes"},
      {Device_GSensor::get_name_by_id, 0x14150720, "Offset settings"},
      {Device_GSensor::get_name_by_id, 0x14150730, "Data rates"},
      {Device_GSensor::get_name_by_id, 0x14150740, ""},
      {Device_PIC::get_name_by_id, 0x14160001, "Available"},
      {Device_TRK7000::get_name_by_id, 0x14170001, "Available"},
      {Device_TRK7000::get_name_by_id, 0x14170110, "VTIN temperatures"},
      {Device_TRK7000::get_name_by_id, 0x14170120, "BT temperatures"},
      {Device_TRK7000::get_name_by_id, 0x14170300, "Fan speeds"},
  };
  for (const auto& [name_of, id, name] : headings) {
    EXPECT_EQ(name_of(id), name) << std::hex << id;
  }
}

}  // namespace
