// Catalogue of the power and ignition controller: its items with their names, units, option lists,
// device codes and default ranges, and the class-static maps made from them.
#include <algorithm>
#include <array>

#include "devices/pic/device_pic.h"
#include "devices/pic/pic_items.h"
#include "framework/load_time.h"

namespace {

using catalogue::Bounds;
using catalogue::Row;

constexpr std::string_view kOffOn = "0=OFF|1=ON";
constexpr std::string_view kSeconds = "sec(s)";
constexpr std::string_view kTimes = "time(s)";

constexpr std::array kFixedRows{
    Row{.id = pic::kPresence, .name = "Available", .raw = 0x600008},
    Row{.id = pic::kInformation, .name = "Information"},
    Row{.id = pic::kFirmwareVersion, .name = "Firmware version", .raw = 0x600000},
    Row{.id = pic::kSwitchStatus,
        .name = "SW1_4 status",
        .options = "0=SW mode|1=HW mode",
        .raw = 0x610002,
        .range = Bounds{0, 1}},
    Row{.id = pic::kVehicleOrPcMode,
        .name = "V/P mode",
        .options = "0=Vehicle mode|1=PC mode",
        .raw = 0x610003,
        .range = Bounds{0, 1}},
    Row{.id = pic::kBatteryType,
        .name = "Battery type",
        .options = "0=ERR|1=12V|2=24V",
        .raw = 0x620004,
        .range = Bounds{0, 2}},
    Row{.id = pic::kCurrentView, .name = "Settings"},
    Row{.id = pic::kDefaultView, .name = "Default settings"},
    Row{.id = pic::kStatus, .name = "Real-time status"},
    Row{.id = pic::kIgnitionStatus,
        .name = "IGN status",
        .options = kOffOn,
        .raw = 0x62000A,
        .range = Bounds{0, 1}},
    Row{.id = 0x14160802,
        .name = "Ignition off timer",
        .unit = kSeconds,
        .raw = 0x6A0005,
        .range = Bounds{0, 65535}},
    Row{.id = pic::kPowerInput,
        .name = "Power input",
        .unit = "V",
        .raw = 0x620005,
        .range = Bounds{0, 24}},
    Row{.id = 0x14160804,
        .name = "Low battery detection timer",
        .unit = kSeconds,
        .raw = 0x6A0007,
        .range = Bounds{0, 65535}},
    Row{.id = pic::kOutput48V,
        .name = "48V output",
        .options = kOffOn,
        .raw = 0x62000C,
        .range = Bounds{0, 1}},
    Row{.id = 0x14160806,
        .name = "Retry times press power button for power off",
        .unit = kTimes,
        .raw = 0x6A0003,
        .range = Bounds{0, 255}},
    Row{.id = 0x14160807,
        .name = "Retry timer press power button for power off",
        .unit = kSeconds,
        .raw = 0x6A0004,
        .range = Bounds{0, 65535}},
    Row{.id = 0x14160808,
        .name = "Hard off timer",
        .unit = kSeconds,
        .raw = 0x6A0006,
        .range = Bounds{0, 65535}},
};

struct Setting {
  std::string_view name;
  std::string_view unit{};
  std::string_view options{};
  Bounds range;
};

// Settings 1 to 11. Ranges are in display units and hold where the device reports none.
constexpr std::array<Setting, pic::kSettingCount> kSettings{{
    {.name = "Ignition delay on timer", .unit = kSeconds, .range = {7, 65535}},
    {.name = "Ignition delay off timer", .unit = kSeconds, .range = {1, 65535}},
    {.name = "Ignition hard off timer", .unit = kSeconds, .range = {1, 65535}},
    {.name = "Power off retry times", .unit = kTimes, .range = {1, 255}},
    {.name = "Power off retry timer", .unit = kSeconds, .range = {5, 65535}},
    {.name = "12V low battery voltage", .unit = "V", .range = {9, 11.9}},
    {.name = "24V low battery voltage", .unit = "V", .range = {21, 23.9}},
    {.name = "Low battery detection timer", .unit = kSeconds, .range = {1, 65535}},
    {.name = "Low battery hard off", .unit = kSeconds, .range = {1, 65535}},
    {.name = "Low battery voltage setup", .options = "0=Disable|1=Enable", .range = {0, 1}},
    {.name = "Battery type setting", .options = "0=Auto|1=12V|2=24V", .range = {0, 2}},
}};

// A view's code in the device library for setting n is its base plus n - 1.
struct View {
  unsigned int id;
  unsigned int raw;
  bool described;  // names, units and option lists stand on the published views only
  bool ranged;
};

constexpr std::array kViews{
    View{.id = pic::kCurrentView, .raw = 0x690000, .described = true, .ranged = true},
    View{.id = pic::kDefaultView, .raw = 0x6D0000, .described = true, .ranged = true},
    View{.id = pic::kWriteView, .raw = 0x680000, .described = false, .ranged = true},
    View{.id = pic::kMinimumView, .raw = 0x6B0000, .described = false, .ranged = false},
    View{.id = pic::kMaximumView, .raw = 0x6C0000, .described = false, .ranged = false},
};

constexpr auto all_rows() {
  std::array<Row, kFixedRows.size() + kViews.size() * kSettings.size()> rows{};
  auto* next = std::ranges::copy(kFixedRows, rows.begin()).out;
  for (const View& view : kViews) {
    for (unsigned int n = 1; n <= pic::kSettingCount; ++n) {
      const Setting& setting = kSettings[n - 1];
      *next = {.id = view.id + n, .raw = view.raw + n - 1};
      if (view.described) {
        next->name = setting.name;
        next->unit = setting.unit;
        next->options = setting.options;
      }
      if (view.ranged) {
        next->range = setting.range;
      }
      ++next;
    }
  }
  return rows;
}

constexpr auto kRows = all_rows();

}  // namespace

ReadEntry Device_PIC::get_func = nullptr;
WriteEntry Device_PIC::set_func = nullptr;

StringMap Device_PIC::init_device_name_map() {
  return catalogue::name_map(kRows);
}
StringMap Device_PIC::init_unit_map() {
  return catalogue::unit_map(kRows);
}
StringMap Device_PIC::init_desc_map() {
  return catalogue::option_map(kRows);
}
RawMap Device_PIC::init_kova_id_map() {
  return catalogue::raw_id_map(kRows);
}
RangeMap Device_PIC::init_bound_map() {
  return catalogue::bound_map(kRows);
}

const std::string Device_PIC::NAME_DEVICE = "PIC";
StringMap Device_PIC::device_name_map = load_time::build(init_device_name_map);
StringMap Device_PIC::unit_map = load_time::build(init_unit_map);
StringMap Device_PIC::desc_map = load_time::build(init_desc_map);
RawMap Device_PIC::kova_id_map = load_time::build(init_kova_id_map);
RangeMap Device_PIC::bound_map = load_time::build(init_bound_map);
