// The power and ignition controller: conversions, writes and the ranges that the device reports.
#include "devices/pic/device_pic.h"

#include <gtest/gtest.h>

#include "framework/json_owner.h"
#include "tests/support/device_double.h"

namespace {

using Call = DeviceDouble::Call;

TEST(DevicePIC, CatalogueHasTheItemsOfTheController) {
  EXPECT_EQ(Device_PIC::init_device_name_map().size(), 39U);
  EXPECT_EQ(Device_PIC::init_unit_map().size(), 24U);
  EXPECT_EQ(Device_PIC::init_desc_map().size(), 9U);
  EXPECT_EQ(Device_PIC::init_kova_id_map().size(), 68U);
  EXPECT_EQ(Device_PIC::init_bound_map().size(), 44U);
  // A write target has a range and a code, but neither name nor unit.
  EXPECT_EQ(Device_PIC::get_name_by_id(0x14160731), "");
  EXPECT_EQ(Device_PIC::get_unit_by_id(0x14160731), "");
  EXPECT_EQ(Device_PIC::init_bound_map().at(0x14160731), (Range{{MIN, 7.0}, {MAX, 65535.0}}));
  EXPECT_EQ(Device_PIC::init_kova_id_map().at(0x1416073B), 0x68000AU);
}

TEST(DevicePIC, VoltageItemsAreTheThresholdsInAllViewsAndThePowerInput) {
  for (const unsigned int id : {0x14160716U, 0x14160727U, 0x14160736U, 0x14160746U, 0x14160757U,
                                0x141607F6U, 0x14160803U}) {
    EXPECT_TRUE(Device_PIC::is_transfer_volt(id)) << std::hex << id;
  }
  for (const unsigned int id : {0x14160715U, 0x14160806U, 0x14160606U, 0x14150716U}) {
    EXPECT_FALSE(Device_PIC::is_transfer_volt(id)) << std::hex << id;
  }
}

TEST(DevicePIC, InformationTexts) {
  const struct {
    std::uint32_t firmware, switches, mode, battery;
    const char* texts[4];
  } cases[] = {
      {291, 0, 0, 0, {"V.35", "SW mode", "Vehicle mode", "ERR"}},
      {2565, 2, 7, 1, {"V.5", "HW mode", "PC mode", "12V"}},
      {0xFFFFFF00, 1, 1, 7, {"V.0", "HW mode", "PC mode", "24V"}},
  };
  for (const auto& [firmware, switches, mode, battery, texts] : cases) {
    DeviceDouble device;
    device.values = {{0x600008, 1},
                     {0x600000, firmware},
                     {0x610002, switches},
                     {0x610003, mode},
                     {0x620004, battery}};
    StringMap out;
    EXPECT_EQ(Device_PIC::get_info_to_map(&out), IOT_STATUS_SUCCESS);
    EXPECT_EQ(out, (StringMap{{0x14160601, texts[0]},
                              {0x14160602, texts[1]},
                              {0x14160603, texts[2]},
                              {0x14160604, texts[3]}}));
  }
}

TEST(DevicePIC, SingleReads) {
  DeviceDouble device;
  device.values = {{0x600008, 1},  {0x600000, 1}, {0x620005, 127}, {0x690000, 0xFFFFFFFF},
                   {0x6B0005, 95}, {0x690009, 2}, {0, 33}};
  device.read_status = {{0x610002, 1}, {0x610003, 1}, {0x620004, 1}, {0x690001, 0x99}};
  const auto text = [](const char* initial) { return JsonOwner(json_string(initial)); };
  const auto real = [] { return JsonOwner(json_real(-1)); };
  const auto integer = [] { return JsonOwner(json_integer(-1)); };
  const struct {
    unsigned int id;
    JsonOwner value;
    Status status;
    JsonOwner expected;
    const char* reason;
  } cases[] = {
      {0x14160601, text(""), 0, text("V.1"), "information"},
      {0x14160602, text("x"), IOT_STATUS_NOT_FOUND, text("x"), "unreadable information"},
      {0x14160605, text("x"), IOT_STATUS_NOT_FOUND, text("x"), "no such information"},
      {0x14160803, real(), 0, JsonOwner(json_real(127 * 0.1)), "volts"},
      {0x14160746, real(), 0, JsonOwner(json_real(9.5)), "the device's minimum"},
      {0x14160711, integer(), 0, JsonOwner(json_integer(0xFFFFFFFF)), "unsigned"},
      {0x1416071A, integer(), 0, JsonOwner(json_integer(2)), "the whole word"},
      {0x14160712, integer(), IOT_STATUS_READ_FAILED, integer(), "unreadable"},
      {0x141608F0, integer(), 0, JsonOwner(json_integer(33)), "an unknown item reads code 0"},
      {0x14160001, integer(), IOT_STATUS_UNSUPPORTED, integer(), "presence"},
      {0x14160901, integer(), IOT_STATUS_UNSUPPORTED, integer(), "no such group"},
  };
  for (const auto& [id, value, status, expected, reason] : cases) {
    EXPECT_EQ(Device_PIC::get_value_by_id(id, value.get()), status) << reason;
    EXPECT_TRUE(json_equal(value.get(), expected.get())) << reason;
  }
  EXPECT_EQ(Device_PIC::kova_id_map.erase(0x141608F0), 1U);
  device.read_status[0x600000] = 1;
  EXPECT_EQ(Device_PIC::get_value_by_id(0x14160601, text("").get()), IOT_STATUS_READ_FAILED);
  device.values[0x600008] = 0;
  EXPECT_EQ(Device_PIC::get_value_by_id(0x14160711, integer().get()), IOT_STATUS_NOT_READY);
}

TEST(DevicePIC, WritesReachTheTargetWhateverTheView) {
  const auto integer = [](json_int_t value) { return JsonOwner(json_integer(value)); };
  const auto real = [](double value) { return JsonOwner(json_real(value)); };
  const struct {
    unsigned int id;
    JsonOwner value;
    std::uint32_t code, word;
  } accepted[] = {
      {0x14160711, integer(70000), 0x680000, 70000},  // out of range: the device decides
      {0x14160721, integer(8), 0x680000, 8},          // a default's ID writes the setting
      {0x14160735, integer(-1), 0x680004, 0xFFFFFFFF},
      {0x14160711, real(1.0), 0x680000, 0},
      {0x14160716, integer(12), 0x680005, 120},
      {0x14160716, real(11.99), 0x680005, 119},
      {0x14160727, real(11.55), 0x680006, 115},
      {0x1416071A, integer(5), 0x680009, 1},
      {0x1416071A, integer(-3), 0x680009, 0},
      {0x1416071A, real(1), 0x680009, 0},
      {0x1416071B, integer(0x100000002), 0x68000A, 2},
      {0x141607FC, integer(4), 0, 4},  // no such setting: code 0
  };
  for (const auto& [id, value, code, word] : accepted) {
    DeviceDouble device;  // presence is not asked
    device.write_status[code] = 0;
    EXPECT_EQ(Device_PIC::set_value_by_id(id, value.get()), IOT_STATUS_SUCCESS);
    EXPECT_EQ(device.calls, (std::vector<Call>{{Call::kWrite, code, word}})) << std::hex << id;
  }
  EXPECT_EQ(Device_PIC::kova_id_map.erase(0x1416073C), 1U);

  const struct {
    unsigned int id;
    JsonOwner value;
    Status status;
  } refused[] = {
      {0x14160711, nullptr, IOT_STATUS_INVALID_PARAMETER},
      {0x1416071A, JsonOwner(json_true()), IOT_STATUS_INVALID_PARAMETER},
      {0x14160711, JsonOwner(json_string("1")), IOT_STATUS_INVALID_PARAMETER},
      {0x14160801, integer(1), IOT_STATUS_UNSUPPORTED},
      {0x14160601, integer(1), IOT_STATUS_UNSUPPORTED},
  };
  DeviceDouble device;
  for (const auto& [id, value, status] : refused) {
    EXPECT_EQ(Device_PIC::set_value_by_id(id, value.get()), status) << std::hex << id;
  }
  EXPECT_TRUE(device.calls.empty());
  device.write_status[0x680000] = 0x42;
  EXPECT_EQ(Device_PIC::set_value_by_id(0x14160711, integer(1).get()), IOT_STATUS_WRITE_FAILED);
  Device_PIC::set_func = nullptr;
  EXPECT_EQ(Device_PIC::set_value_by_id(0x14160711, nullptr), IOT_STATUS_NOT_READY);
}

TEST(DevicePIC, RangesBecomeTheDevicesOwnWhereItReportsBothEnds) {
  Device_PIC::bound_map = Device_PIC::init_bound_map();
  {
    DeviceDouble device;
    for (std::uint32_t n = 0; n < 11; ++n) {
      device.values[0x6B0000 + n] = 95 + n;
      device.values[0x6C0000 + n] = 115 + n;
    }
    device.read_status[0x6B0000] = 1;
    device.read_status[0x6C0001] = 1;
    const Device_PIC pic;
    EXPECT_EQ(device.calls.size(), 22U);  // a failing minimum does not spare the maximum
    EXPECT_EQ(device.calls[0].code, 0x6B0000U);
    EXPECT_EQ(device.calls[1].code, 0x6C0000U);
  }
  const struct {
    unsigned int number;
    Range range;
  } cases[] = {
      {1, {{MIN, 7.0}, {MAX, 65535.0}}},
      {2, {{MIN, 1.0}, {MAX, 65535.0}}},
      {3, {{MIN, 97.0}, {MAX, 117.0}}},
      {6, {{MIN, 100 * 0.1}, {MAX, 120 * 0.1}}},
  };
  for (const auto& [number, range] : cases) {
    for (const unsigned int view : {0x14160710U, 0x14160720U, 0x14160730U}) {
      EXPECT_EQ(Device_PIC::get_range_by_id(view + number), range) << std::hex << view + number;
    }
  }
  Device_PIC::bound_map = Device_PIC::init_bound_map();
}

TEST(DevicePIC, OnlyPublishedItemsMakeElements) {
  unsigned int raw = 1;
  for (const unsigned int id : {0x14160731U, 0x14160741U, 0x14160710U, 0x1416071CU, 0x14160001U}) {
    json_t* element = reinterpret_cast<json_t*>(&raw);
    EXPECT_EQ(Device_PIC::create_json_element(id, &raw, &element), IOT_STATUS_JSON_ERROR);
    EXPECT_EQ(element, nullptr) << std::hex << id;
  }
}

TEST(DevicePIC, AbsentControllerHasNoItems) {
  DeviceDouble device;
  device.values[0x600008] = 0;
  device.lenient = true;
  Device_PIC pic;
  EXPECT_TRUE(pic.get_info_map().empty());
  EXPECT_TRUE(pic.get_status_map().empty());
  EXPECT_TRUE(pic.get_settings_map().empty());
  EXPECT_TRUE(pic.get_defaults_map().empty());
}

}  // namespace
