// Catalogue of the add-on board: its items with their names, units, device codes and ranges, and
// the class-static maps made from them.
#include <array>
#include <charconv>

#include "devices/addon_board/device_trk7000.h"
#include "devices/addon_board/trk7000_items.h"
#include "framework/load_time.h"

namespace {

using catalogue::Bounds;
using catalogue::Kind;
using catalogue::Package;
using catalogue::Role;
using catalogue::Row;
using catalogue::Shape;

constexpr unsigned int kVtinSensors = 0x14170110;
constexpr unsigned int kBtSensors = 0x14170120;

// Tenths of a kelvin to degrees; half a degree is added before the cut, so that -0.65 reads 0.
constexpr Shape kTemperature{.role = Role::kReading,
                             .kind = Kind::kInteger,
                             .scale = 0.1,
                             .offset = -273.15 + 0.5,
                             .truncated = true};
constexpr Shape kFanSpeed{.role = Role::kReading, .kind = Kind::kInteger};
constexpr Shape kIdentity{.role = Role::kIdentity, .kind = Kind::kText};

constexpr Row temperature(unsigned int id, std::string_view name, unsigned int code) {
  return {.id = id,
          .name = name,
          .code = code,
          .range = Bounds{0, 100},
          .as = kTemperature,
          .note = "raw is tenths of a kelvin"};
}

constexpr Row fan_speed(unsigned int id, std::string_view name, unsigned int code) {
  return {.id = id, .name = name, .code = code, .range = Bounds{0, 8000}, .as = kFanSpeed};
}

// A version word holds a letter in bits 23..16, the major number in 15..8 and the minor in 7..0:
// 0x00560102 is V1.2. The EC type's middle number is hexadecimal.
std::string version_text(unsigned int word, int major_base) {
  std::array<char, 8> text{static_cast<char>((word >> 16U) & 0xFFU)};
  char* end = std::to_chars(&text[1], text.end(), (word >> 8U) & 0xFFU, major_base).ptr;
  *end = '.';
  end = std::to_chars(end + 1, text.end(), word & 0xFFU).ptr;
  return {text.begin(), end};
}

std::string version(unsigned int word) {
  return version_text(word, 10);
}

std::string ec_type(unsigned int word) {
  return version_text(word, 16);
}

// Units stand on the group headings and are published with the package, not with each sensor.
constexpr std::array kRows{
    Row{.id = trk7000::kPresence, .name = "Available", .code = 0x800000},
    Row{.id = trk7000::kTemperatures, .name = "Temperatures", .unit = "Cel", .as = kTemperature},
    Row{.id = kVtinSensors, .name = "VTIN temperatures"},
    temperature(0x14170111, "TRK7K VTIN 1", 0x820000),
    temperature(0x14170112, "TRK7K VTIN 2", 0x820001),
    temperature(0x14170113, "TRK7K VTIN 3", 0x820002),
    Row{.id = kBtSensors, .name = "BT temperatures"},
    temperature(0x14170121, "TRK7K BT 1", 0x820003),
    temperature(0x14170122, "TRK7K BT 2", 0x820004),
    temperature(0x14170123, "TRK7K BT 3", 0x820005),
    temperature(0x14170124, "TRK7K BT 4", 0x820006),
    Row{.id = trk7000::kFanSpeeds, .name = "Fan speeds", .unit = "RPM", .as = kFanSpeed},
    Row{.id = trk7000::kOnboardFans, .name = "Onboard fan speeds"},
    fan_speed(0x14170311, "TRK7K OB fan 1", 0x822003),
    fan_speed(0x14170312, "TRK7K OB fan 2", 0x822004),
    fan_speed(0x14170313, "TRK7K OB fan 3", 0x822005),
    fan_speed(0x14170314, "TRK7K OB fan 4", 0x822006),
    fan_speed(0x14170315, "TRK7K OB fan 5", 0x822007),
    fan_speed(0x14170316, "TRK7K OB fan 6", 0x822008),
    fan_speed(0x14170317, "TRK7K OB fan 7", 0x822009),
    Row{.id = trk7000::kInformation, .name = "Information", .as = kIdentity},
    Row{.id = 0x14170601,
        .name = "Firmware version",
        .code = 0x800001,
        .as = kIdentity,
        .text = version,
        .note = "letter and two numbers: raw 0x00560102 is V1.2"},
    Row{.id = 0x14170602,
        .name = "EC type",
        .code = 0x800002,
        .as = kIdentity,
        .text = ec_type,
        .note = "as the firmware version, the first number hexadecimal"},
    Row{.id = 0x14170603,
        .name = "Kernel version",
        .code = 0x800003,
        .as = kIdentity,
        .text = version,
        .note = "as the firmware version"},
};

// Fans and temperatures stand in the document a second time, where hosts look for any board's.
constexpr std::array kPackages{
    Package{.id = trk7000::kInformation},
    Package{.id = trk7000::kOnboardFans,
            .unit_id = trk7000::kFanSpeeds,
            .second_name = "Fan Speed",
            .second_id = 0x20300},
    Package{.id = trk7000::kTemperatures,
            .unit_id = trk7000::kTemperatures,
            .second_name = "Temperature",
            .second_id = 0x20100},
};

constexpr int kPlace = load_time::place(4);

}  // namespace

constinit const catalogue::RowTable trk7000::kTable(kRows, {.texts = kInformation});
constinit const catalogue::Ids trk7000::kVtin = items_under(kRows, kVtinSensors);
constinit const catalogue::Ids trk7000::kBt = items_under(kRows, kBtSensors);
constinit const catalogue::Ids trk7000::kFans = items_under(kRows, kOnboardFans);

constinit const catalogue::Sheet trk7000::kSheet{.name = "TRK-7000",
                                                 .title = "Add-on board",
                                                 .id = trk7000::kFamily,
                                                 .presence_code = *kRows.front().code,
                                                 .rows = kRows,
                                                 .packages = kPackages,
                                                 .second_family = "Hardware Monitor",
                                                 .second_family_id = 0x20000};

ReadEntry Device_TRK7000::get_func = nullptr;

[[gnu::init_priority(kPlace)]] const std::string Device_TRK7000::NAME_DEVICE =
    load_time::build(+[] { return std::string(trk7000::kSheet.name); });
[[gnu::init_priority(kPlace)]] StringMap Device_TRK7000::device_name_map =
    load_time::build(init_device_name_map);
[[gnu::init_priority(kPlace)]] StringMap Device_TRK7000::unit_map = load_time::build(init_unit_map);
[[gnu::init_priority(kPlace)]] StringMap Device_TRK7000::desc_map = load_time::build(init_desc_map);
[[gnu::init_priority(kPlace)]] RawMap Device_TRK7000::kova_id_map =
    load_time::build(init_kova_id_map);
[[gnu::init_priority(kPlace)]] RangeMap Device_TRK7000::bound_map =
    load_time::build(init_bound_map);
