// Items that stand in no document make no element, and leave no stale one with the caller.
#include <gtest/gtest.h>

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

}  // namespace
