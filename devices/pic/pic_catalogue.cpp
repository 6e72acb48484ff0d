// Catalogue of the power and ignition controller: its items with their names, units, option lists,
// device codes, ranges and shapes, and the class-static maps made from them.
#include <algorithm>
#include <array>

#include "devices/pic/device_pic.h"
#include "devices/pic/pic_items.h"
#include "framework/load_time.h"

namespace {

using catalogue::Bounds;
using catalogue::Kind;
using catalogue::Package;
using catalogue::Role;
using catalogue::Row;
using catalogue::Shape;
using catalogue::with_role;

constexpr std::string_view kSeconds = "sec(s)";
constexpr std::string_view kTimes = "time(s)";
constexpr double kLongest = 65535;  // seconds

constexpr Shape kIdentityText{.role = Role::kIdentity, .kind = Kind::kText};
constexpr Shape kStateText{.role = Role::kState, .kind = Kind::kText};
constexpr Shape kStateSwitch{.role = Role::kState, .kind = Kind::kSwitch};
constexpr Shape kNumber{.role = Role::kReading, .kind = Kind::kInteger};
constexpr Shape kVolts{.role = Role::kReading, .kind = Kind::kReal, .scale = Device_PIC::FACTOR};
constexpr Shape kSettingNumber{.role = Role::kSetting, .kind = Kind::kInteger};
constexpr Shape kSettingVolts = with_role(kVolts, Role::kSetting);
constexpr Shape kSettingSwitch{.role = Role::kSetting, .kind = Kind::kSwitch};

std::string firmware_version(unsigned int word) {
  return "V." + std::to_string(word & 0xFFU);
}

std::string switch_status(unsigned int word) {
  return word != 0 ? "HW mode" : "SW mode";
}

std::string vehicle_or_pc_mode(unsigned int word) {
  return word != 0 ? "PC mode" : "Vehicle mode";
}

std::string battery_type(unsigned int word) {
  return word == 0 ? "ERR" : word == 1 ? "12V" : "24V";
}

consteval Row state(unsigned int id, std::string_view name, std::string_view options,
                    unsigned int code, double max, std::string (*text)(unsigned int)) {
  return {.id = id,
          .name = name,
          .options = options,
          .code = code,
          .range = Bounds{0, max},
          .as = kStateText,
          .text = text,
          .note = "the label as text"};
}

consteval Row status_switch(unsigned int id, std::string_view name, unsigned int code) {
  return {.id = id,
          .name = name,
          .options = "0=OFF|1=ON",
          .code = code,
          .range = Bounds{0, 1},
          .as = kStateSwitch};
}

consteval Row status_timer(unsigned int id, std::string_view name, unsigned int code) {
  return {.id = id,
          .name = name,
          .unit = kSeconds,
          .code = code,
          .range = Bounds{0, kLongest},
          .as = kNumber};
}

constexpr std::array kFixedRows{
    Row{.id = pic::kPresence, .name = "Available", .code = 0x600008},
    Row{.id = pic::kInformation, .name = "Information", .as = kIdentityText},
    Row{.id = 0x14160601,
        .name = "Firmware version",
        .code = 0x600000,
        .as = kIdentityText,
        .text = firmware_version,
        .note = "\"V.\" and the low byte of raw"},
    state(0x14160602, "SW1_4 status", "0=SW mode|1=HW mode", 0x610002, 1, switch_status),
    state(0x14160603, "V/P mode", "0=Vehicle mode|1=PC mode", 0x610003, 1, vehicle_or_pc_mode),
    state(0x14160604, "Battery type", "0=ERR|1=12V|2=24V", 0x620004, 2, battery_type),
    Row{.id = pic::kCurrentView, .name = "Settings", .as = kSettingNumber},
    Row{.id = pic::kDefaultView, .name = "Default settings"},
    Row{.id = pic::kStatus, .name = "Real-time status", .as = kNumber},
    status_switch(0x14160801, "IGN status", 0x62000A),
    status_timer(0x14160802, "Ignition off timer", 0x6A0005),
    Row{.id = 0x14160803,
        .name = "Power input",
        .unit = "V",
        .code = 0x620005,
        .range = Bounds{0, 24},
        .as = kVolts},
    status_timer(0x14160804, "Low battery detection timer", 0x6A0007),
    status_switch(0x14160805, "48V output", 0x62000C),
    Row{.id = 0x14160806,
        .name = "Retry times press power button for power off",
        .unit = kTimes,
        .code = 0x6A0003,
        .range = Bounds{0, 255},
        .as = kNumber},
    status_timer(0x14160807, "Retry timer press power button for power off", 0x6A0004),
    status_timer(0x14160808, "Hard off timer", 0x6A0006),
};

// Settings 1, 2, ... Ranges are in display units and hold where the device reports none. Names,
// units and options are those of the current value and the default.
struct Setting {
  std::string_view name;
  std::string_view unit{};
  std::string_view options{};
  std::string_view offered{};
  Bounds range;
  Shape as;
};

consteval Setting timer(std::string_view name, double shortest) {
  return {.name = name, .unit = kSeconds, .range = {shortest, kLongest}, .as = kSettingNumber};
}

consteval Setting threshold(std::string_view name, Bounds range) {
  return {.name = name, .unit = "V", .range = range, .as = kSettingVolts};
}

constexpr std::array kSettings{
    timer("Ignition delay on timer", 7),
    timer("Ignition delay off timer", 1),
    timer("Ignition hard off timer", 1),
    Setting{
        .name = "Power off retry times", .unit = kTimes, .range = {1, 255}, .as = kSettingNumber},
    timer("Power off retry timer", 5),
    threshold("12V low battery voltage", {9, 11.9}),
    threshold("24V low battery voltage", {21, 23.9}),
    timer("Low battery detection timer", 1),
    timer("Low battery hard off", 1),
    Setting{.name = "Low battery voltage setup",
            .options = "0=Disable|1=Enable",
            .range = {0, 1},
            .as = kSettingSwitch},
    Setting{.name = "Battery type setting",
            .options = "0=Auto|1=12V|2=24V",
            .offered = "0|1|2",
            .range = {0, 2},
            .as = kSettingNumber},
};

// The views of setting n, whose IDs and codes are the view's and n. Hosts see the first two.
consteval Row current_value(unsigned int n, const Setting& setting) {
  return {.id = pic::kCurrentView + n,
          .name = setting.name,
          .unit = setting.unit,
          .options = setting.options,
          .offered = setting.offered,
          .code = 0x690000 + n - 1,
          .range = setting.range,
          .as = setting.as,
          .written_at = pic::kWriteView + n};
}

consteval Row factory_default(unsigned int n, const Setting& setting) {
  return {.id = pic::kDefaultView + n,
          .name = setting.name,
          .unit = setting.unit,
          .options = setting.options,
          .code = 0x6D0000 + n - 1,
          .range = setting.range,
          .as = with_role(setting.as, Role::kDefault),
          .written_at = pic::kWriteView + n,
          .default_of = pic::kCurrentView + n};
}

consteval Row write_target(unsigned int n, const Setting& setting) {
  return {.id = pic::kWriteView + n, .code = 0x680000 + n - 1, .range = setting.range};
}

consteval Row minimum(unsigned int n) {
  return {.id = pic::kMinimumView + n, .code = 0x6B0000 + n - 1};
}

consteval Row maximum(unsigned int n) {
  return {.id = pic::kMaximumView + n, .code = 0x6C0000 + n - 1};
}

constexpr auto kRows = []() consteval {
  constexpr std::size_t kViews = 5;
  std::array<Row, kFixedRows.size() + kViews * kSettings.size()> rows{};
  auto* next = std::ranges::copy(kFixedRows, rows.begin()).out;
  unsigned int n = 0;
  for (const Setting& setting : kSettings) {
    ++n;
    *next++ = current_value(n, setting);
    *next++ = factory_default(n, setting);
    *next++ = write_target(n, setting);
    *next++ = minimum(n);
    *next++ = maximum(n);
  }
  std::ranges::sort(rows, {}, &Row::id);
  return rows;
}
();

constexpr std::array kPackages{
    Package{.id = pic::kInformation},
    Package{.id = pic::kDefaultView},
    Package{.id = pic::kCurrentView},
    Package{.id = pic::kStatus},
};

constexpr int kPlace = load_time::place(3);

}  // namespace

constinit const catalogue::RowTable pic::kTable(kRows, {.texts = kInformation,
                                                        .settings = kSettings,
                                                        .written_from = kWriteView});
constinit const catalogue::Ids pic::kCurrentValues = items_under(kRows, kCurrentView);
constinit const catalogue::Ids pic::kDefaults = items_under(kRows, kDefaultView);
constinit const catalogue::Ids pic::kStatusItems = items_under(kRows, kStatus);

constinit const catalogue::Sheet pic::kSheet{
    .name = "PIC",
    .title = "Power and ignition controller",
    .id = pic::kFamily,
    .presence_code = *kRows.front().code,
    .rows = kRows,
    .packages = kPackages,
    .note =
        R"(The ranges of settings and their defaults are what the device reports for setting n under the codes
`0x6B0000` + n - 1 (minimum) and `0x6C0000` + n - 1 (maximum); the ranges below stand where it does
not. Factory defaults cannot be changed: a write to one sets the setting of that name.)"};

ReadEntry Device_PIC::get_func = nullptr;
WriteEntry Device_PIC::set_func = nullptr;

[[gnu::init_priority(kPlace)]] const std::string Device_PIC::NAME_DEVICE =
    load_time::build(+[] { return std::string(pic::kSheet.name); });
[[gnu::init_priority(kPlace)]] StringMap Device_PIC::device_name_map =
    load_time::build(init_device_name_map);
[[gnu::init_priority(kPlace)]] StringMap Device_PIC::unit_map = load_time::build(init_unit_map);
[[gnu::init_priority(kPlace)]] StringMap Device_PIC::desc_map = load_time::build(init_desc_map);
[[gnu::init_priority(kPlace)]] RawMap Device_PIC::kova_id_map = load_time::build(init_kova_id_map);
[[gnu::init_priority(kPlace)]] RangeMap Device_PIC::bound_map = load_time::build(init_bound_map);
