// The capability document of the reference machine and of machines that lack something.
#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <sstream>

#include "framework/json_owner.h"
#include "include/kova_iot.h"
#include "module/kova_device.h"
#include "tests/support/documents.h"
#include "tests/support/reference_machine.h"
#include "tests/support/rows.h"
#include "tests/support/wrapped_loader.h"

namespace {

class CapabilityDocument : public testing::Test {
 protected:
  CapabilityDocument() { wrapped_loader::install_device_library(); }
  void TearDown() override { KovaIoTUninitialize(); }

  JsonOwner document() {
    JsonOwner target(json_object());
    EXPECT_EQ(KovaIoTInitialize(), IOT_STATUS_SUCCESS);
    has_document = KovaIoTGetMDCapability(target.get()) == IOT_STATUS_SUCCESS;
    return target;
  }

  static std::vector<std::string> keys(const json_t* object) {
    std::vector<std::string> names;
    const char* key = nullptr;
    json_t* value = nullptr;
    json_object_foreach(const_cast<json_t*>(object), key, value) {
      if (json_is_object(value)) {
        names.emplace_back(key);
      }
    }
    return names;
  }

  DeviceDouble device;
  bool has_document = false;
};

TEST_F(CapabilityDocument, IsTheReferenceMachinesToTheByte) {
  load_reference_machine(&device);
  const std::time_t before = std::time(nullptr);
  const JsonOwner made = document();
  const json_t* package = json_object_get(json_object_get(made.get(), "PoE"), "PoE 1");
  const json_int_t base_time = json_integer_value(json_object_get(package, "bt"));
  EXPECT_GE(base_time, before);
  EXPECT_LE(base_time, std::time(nullptr));

  clear_base_times(made.get());
  EXPECT_EQ(first_difference(made.get(), reference_document().get()), "")
      << "tests/data/reference_document.json";
}

TEST_F(CapabilityDocument, AsksTheDeviceInItsOrder) {
  load_reference_machine(&device);
  document();
  const std::vector<std::uint32_t> asked = device.codes_read();
  const JsonOwner steps = load_test_data("reference_calls.json");
  const auto told = [](std::uint32_t code) {
    std::ostringstream text;
    text << std::hex << std::uppercase << code << ", " << owner_of(code);
    return text.str();
  };
  size_t next = 0;
  for (size_t i = 0; i < json_array_size(steps.get()); ++i) {
    const json_t* step = json_array_get(steps.get(), i);
    SCOPED_TRACE(std::string("tests/data/reference_calls.json, \"") +
                 json_string_value(json_object_get(step, "why")) + '"');
    std::istringstream reads(json_string_value(json_object_get(step, "reads")));
    for (std::uint32_t code = 0; reads >> std::hex >> code; ++next) {
      ASSERT_EQ(next < asked.size() ? told(asked[next]) : "no call", told(code));
    }
  }
  EXPECT_EQ(next < asked.size() ? told(asked[next]) : "", "")
      << "after the last call of tests/data/reference_calls.json";
}

TEST_F(CapabilityDocument, MergesIntoTheHostsObjectAndOutlivesTheModule) {
  load_reference_machine(&device);
  ASSERT_EQ(KovaIoTInitialize(), IOT_STATUS_SUCCESS);
  const JsonOwner target(json_pack("{s:i, s:i}", "own", 1, "PoE", 2));
  EXPECT_EQ(KovaIoTGetMDCapability(target.get()), IOT_STATUS_SUCCESS);
  const JsonOwner array(json_array());
  EXPECT_EQ(KovaIoTGetMDCapability(array.get()), IOT_STATUS_NOT_READY);
  KovaIoTUninitialize();
  EXPECT_EQ(json_object_size(target.get()),
            json_object_size(reference_document().get()) + 1);  // and the host's own key
  EXPECT_TRUE(json_is_object(json_object_get(json_object_get(target.get(), "PoE"), "PoE 4")));
}

TEST_F(CapabilityDocument, BoardElementsStandInBothPackages) {
  load_reference_machine(&device);
  const JsonOwner made = document();
  const json_t* board = json_object_get(made.get(), "TRK-7000");
  const json_t* monitor = json_object_get(made.get(), "Hardware Monitor");
  EXPECT_EQ(keys(board),
            (std::vector<std::string>{"Information", "Onboard fan speeds", "Temperatures"}));
  EXPECT_EQ(keys(monitor), (std::vector<std::string>{"Fan Speed", "Temperature"}));
  EXPECT_EQ(json_array_get(json_object_get(json_object_get(board, "Temperatures"), "e"), 6),
            json_array_get(json_object_get(json_object_get(monitor, "Temperature"), "e"), 6));
}

// What the machine lacks is missing; the rest stands.
TEST_F(CapabilityDocument, LacksWhatTheMachineLacks) {
  const struct {
    const char* reason;
    std::map<std::uint32_t, std::uint32_t> words;
    std::vector<std::string> families;
  } cases[] = {
      {"a memory module that answers nothing else still has its fourteen fields",
       {{0xA00000, 1}},
       {"SDRAM"}},
      {"PoE without ports has nothing to publish", {{0x200000, 1}}, {}},
      {"a board that reports one fan",
       {{0x800000, 1}, {0x822003, 900}},
       {"TRK-7000", "Hardware Monitor"}},
      {"a board that reports its firmware only",
       {{0x800000, 1}, {0x800001, 0x560102}},
       {"TRK-7000"}},
      {"a controller with one status item", {{0x600008, 1}, {0x62000A, 1}}, {"PIC"}},
  };
  device.lenient = true;
  for (const auto& [reason, words, families] : cases) {
    device.values = words;
    const JsonOwner made = document();
    EXPECT_EQ(keys(made.get()), families) << reason;
    EXPECT_EQ(has_document, !families.empty()) << reason;
  }
}

TEST_F(CapabilityDocument, APortThatCannotBeReadIsPublishedAsZero) {
  device.values = {{0x200000, 1}, {0x260007, 1}, {0x270006, 1}};
  device.lenient = true;
  const JsonOwner made = document();
  const json_t* ports = json_object_get(made.get(), "PoE");
  EXPECT_EQ(keys(ports).size(), 8U);
  const json_t* elements = json_object_get(json_object_get(ports, "PoE 7"), "e");
  ASSERT_EQ(json_array_size(elements), 5U);
  EXPECT_EQ(json_integer_value(json_object_get(json_array_get(elements, 0), "bv")), 1);
  EXPECT_EQ(json_real_value(json_object_get(json_array_get(elements, 4), "v")), 0.0);
}

// Gives a map an entry for as long as it lives.
class Entry {
 public:
  Entry(StringMap& map, unsigned int id, const char* text) : map_(map), before_(map) {
    map_[id] = text;
  }
  ~Entry() { map_ = before_; }
  Entry(const Entry&) = delete;
  Entry& operator=(const Entry&) = delete;

 private:
  StringMap& map_;
  StringMap before_;
};

// Under which IDs a group's "bn" and "bu" are looked up, and which are looked up under none.
TEST_F(CapabilityDocument, NamesAndUnitsOfGroupsAreAskedUnderTheirIds) {
  using Update = Status (KovaDevice::*)(KovaDevice::PackageList*);
  const struct {
    Update update;
    StringMap &names, &units;
    unsigned int id;
    const char *name, *unit;  // with these entries in the maps, for the ID and for 0
  } cases[] = {
      {&KovaDevice::update_sbaterry_info_IPSO_pkgs, Device_SBATTERY::device_name_map,
       Device_SBATTERY::unit_map, 0x14190000, "SMART BATTERY", "a unit"},
      {&KovaDevice::update_pic_info_IPSO_pkgs, Device_PIC::device_name_map, Device_PIC::unit_map,
       0x14160600, "", ""},
      {&KovaDevice::update_pic_settings_IPSO_pkgs, Device_PIC::device_name_map,
       Device_PIC::unit_map, 0x14160710, "", ""},
      {&KovaDevice::update_trk7k_info_IPSO_pkgs, Device_TRK7000::device_name_map,
       Device_TRK7000::unit_map, 0x14170600, "", ""},
      {&KovaDevice::update_gsensor_data_IPSO_pkgs, Device_GSensor::device_name_map,
       Device_GSensor::unit_map, 0x14150900, "", "a unit"},
  };
  load_reference_machine(&device);
  KovaDevice manager;
  for (const auto& [update, names, units, id, name, unit] : cases) {
    const Entry no_name(names, id, "");
    const Entry of_id(units, id, "a unit");
    const Entry of_none(units, 0, "of no group");
    KovaDevice::PackageList list;
    EXPECT_EQ((manager.*update)(&list), IOT_STATUS_SUCCESS) << std::hex << id;
    const JsonList owner(std::move(list));
    ASSERT_EQ(owner.values().size(), 1U) << std::hex << id;
    EXPECT_STREQ(json_string_value(json_object_get(owner.values()[0], "bn")), name)
        << std::hex << id;
    EXPECT_STREQ(json_string_value(json_object_get(owner.values()[0], "bu")), unit)
        << std::hex << id;
  }
}

TEST_F(CapabilityDocument, EndsEmptyWithItsManager) {
  load_reference_machine(&device);
  JsonOwner held;
  {
    KovaDevice manager;
    unsigned int status = 0;
    held.reset(json_incref(manager.get_capability(&status)));
    EXPECT_EQ(json_object_size(held.get()), json_object_size(reference_document().get()));
  }
  EXPECT_EQ(json_object_size(held.get()), 0U);
}

TEST_F(CapabilityDocument, AGroupOfNothingIsNone) {
  device.lenient = true;
  KovaDevice manager;
  KovaDevice::PackageList list;
  EXPECT_EQ(manager.update_IPSO_pkgs(RawMap{}, &list, 1, "n", "u"), IOT_STATUS_READ_FAILED);
  EXPECT_EQ(manager.update_IPSO_pkgs(RawMap{}, &list, 1, "n", "u", &list, 2, "m", "u"),
            IOT_STATUS_READ_FAILED);
  EXPECT_EQ(manager.update_IPSO_pkgs(StringMap{}, &list, 1, "n"), IOT_STATUS_READ_FAILED);
  EXPECT_EQ(manager.update_IPSO_pkgs(7, StringMap{}, &list, 1, "n", ""), IOT_STATUS_READ_FAILED);
  EXPECT_EQ(manager.update_IPSO_pkgs(RawMap{{0x14160001, 1}}, &list, 1, "n", "u"),
            IOT_STATUS_JSON_ERROR);  // no item of the document
  EXPECT_TRUE(list.empty());
  EXPECT_EQ(manager.update_IPSO_pkgs(RawMap{{0x14160801, 1}}, &list, 9, "n", "u"),
            IOT_STATUS_SUCCESS);
  const JsonList owner(std::move(list));
  ASSERT_EQ(owner.values().size(), 1U);
  EXPECT_EQ(json_integer_value(json_object_get(owner.values()[0], "id")), 9);
  EXPECT_STREQ(json_string_value(json_object_get(owner.values()[0], "bu")), "u");
}

TEST_F(CapabilityDocument, AGarbledModuleCountCannotHangTheStart) {
  device.values[0xA00000] = 0xFFFFFFFF;
  device.lenient = true;
  const JsonOwner made = document();
  const auto modules = keys(json_object_get(made.get(), "SDRAM"));
  ASSERT_EQ(modules.size(), 255U);
  EXPECT_EQ(modules.back(), "SDRAM254");
  // Asked twice for presence, before every pass, and once more before the limit ends it.
  EXPECT_EQ(std::ranges::count(device.codes_read(), 0xA00000U), 2 + 255 + 1);
}

}  // namespace
