// The memory-module adapter: single values, and elements that cannot be made.
#include "devices/sdram/device_sdram.h"

#include <gtest/gtest.h>

#include "devices/sdram/sdram_func.h"
#include "framework/json_owner.h"
#include "tests/support/reference_machine.h"

namespace {

class DeviceSdramTest : public testing::Test {
 protected:
  DeviceSdramTest() { load_reference_machine(&device_); }

  DeviceDouble device_;
  Device_SDRAM adapter_;
};

TEST_F(DeviceSdramTest, DecodesWithoutTheAdapterToo) {
  const SdRamFunc decoder(&DeviceDouble::get);
  std::string text = "of another field";
  EXPECT_EQ(decoder.GetRamIndexInfo(0, 0x14180101, text), IOT_STATUS_UNDEFINED_ITEM);
  EXPECT_EQ(text, "N/A");
  double volts = 9;
  EXPECT_EQ(decoder.getVoltage(1, volts), IOT_STATUS_SUCCESS);
  EXPECT_EQ(volts, 1.1);
  const SdRamFunc without_entry(nullptr);
  EXPECT_FALSE(without_entry.IsAvailable());
  EXPECT_EQ(without_entry.getSpecificData(0, text), IOT_STATUS_NOT_READY);
  EXPECT_EQ(without_entry.getVoltage(0, volts), IOT_STATUS_NOT_READY);
  EXPECT_EQ(volts, 0);
}

TEST_F(DeviceSdramTest, TellsTheSeriesOfAPartNumber) {
  const SdRamFunc decoder(&DeviceDouble::get);
  std::string text;
  bool own_module = false;
  EXPECT_EQ(decoder.getPartNumber(0, text, own_module), IOT_STATUS_SUCCESS);
  EXPECT_EQ(text, "VLX-M4S0-AGN3O5IJ-C2");
  EXPECT_TRUE(own_module);
  text.clear();
  EXPECT_EQ(decoder.getPartNumber(1, text, own_module), IOT_STATUS_SUCCESS);
  EXPECT_FALSE(own_module);
  own_module = true;  // stays so where the number cannot be read
  EXPECT_EQ(SdRamFunc(nullptr).getPartNumber(1, text, own_module), IOT_STATUS_NOT_READY);
  EXPECT_TRUE(own_module);
}

// Whatever the failing read may have stored.
TEST_F(DeviceSdramTest, AModuleTypeThatCannotBeReadIsCodeZerosWithTheStatus) {
  const SdRamFunc decoder(&DeviceDouble::get);
  const struct {
    std::uint32_t memory_type, status;
    const char* text;
  } cases[] = {{0x0B, 5, "Undefined"},
               {0x0C, IOT_STATUS_READ_FAILED, "Undefined"},
               {0x12, 5, "Undefined"},
               {0x12, IOT_STATUS_READ_FAILED, "N/A"}};
  device_.stored_on_failure[0xA00002] = 2;
  for (const auto& [memory_type, status, expected] : cases) {
    device_.values[0xA00001] = memory_type;
    device_.read_status[0xA00002] = status;
    std::string text;
    EXPECT_EQ(decoder.getModuleType(0, text), status);
    EXPECT_EQ(text, expected) << memory_type;
  }
}

TEST_F(DeviceSdramTest, MakesElementsOnlyOfItsOwnUtf8Texts) {
  const struct {
    unsigned int id;
    std::string text;
    const char* json;  // the element's value; null: no element
  } cases[] = {{0x14190101, "DDR4", nullptr},
               {0x14181101, "VLX-\xC3(AB", nullptr},
               {0x14181101, std::string("VLX-A \0\0B", 9), "\"VLX-A \""},
               {0x14180901, "N/A", "0.0"},
               {0x14180901, "0x10", "16.0"},
               {0x14180901, "nan", nullptr},  // which is no JSON
               {0x14180901, "-inf", nullptr},
               {0x14180301, "4294967295", "-1"},
               {0x14180D01, "7", "\"7\""}};
  for (const auto& c : cases) {
    std::string text = c.text;
    json_t* made = reinterpret_cast<json_t*>(&text);  // a stale one
    const Status expected = c.json != nullptr ? IOT_STATUS_SUCCESS : IOT_STATUS_JSON_ERROR;
    EXPECT_EQ(Device_SDRAM::create_json_element(c.id, &text, &made), expected) << c.text;
    ASSERT_EQ(made != nullptr, c.json != nullptr) << c.text;
    const JsonOwner element(made);
    const JsonOwner value(c.json != nullptr ? json_loads(c.json, JSON_DECODE_ANY, nullptr)
                                            : nullptr);
    const char* key = json_is_string(value.get()) ? "sv" : "v";
    EXPECT_EQ(json_equal(json_object_get(made, key), value.get()), c.json != nullptr) << c.text;
  }
}

}  // namespace
