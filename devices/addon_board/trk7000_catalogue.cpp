// Catalogue of the add-on board: its items with their names, units, device codes and ranges, and
// the class-static maps made from them.
#include <array>

#include "devices/addon_board/device_trk7000.h"
#include "devices/addon_board/trk7000_items.h"
#include "framework/load_time.h"

namespace {

using catalogue::Bounds;
using catalogue::Row;

constexpr Bounds kCelsius{0, 100};
constexpr Bounds kRpm{0, 8000};

// Units stand on the group headings and are published with the package, not with each sensor.
constexpr std::array kRows{
    Row{.id = trk7000::kPresence, .name = "Available", .raw = 0x800000},
    Row{.id = trk7000::kTemperatures, .name = "Temperatures", .unit = "Cel"},
    Row{.id = 0x14170110, .name = "VTIN temperatures"},
    Row{.id = 0x14170111, .name = "TRK7K VTIN 1", .raw = 0x820000, .range = kCelsius},
    Row{.id = 0x14170112, .name = "TRK7K VTIN 2", .raw = 0x820001, .range = kCelsius},
    Row{.id = 0x14170113, .name = "TRK7K VTIN 3", .raw = 0x820002, .range = kCelsius},
    Row{.id = 0x14170120, .name = "BT temperatures"},
    Row{.id = 0x14170121, .name = "TRK7K BT 1", .raw = 0x820003, .range = kCelsius},
    Row{.id = 0x14170122, .name = "TRK7K BT 2", .raw = 0x820004, .range = kCelsius},
    Row{.id = 0x14170123, .name = "TRK7K BT 3", .raw = 0x820005, .range = kCelsius},
    Row{.id = 0x14170124, .name = "TRK7K BT 4", .raw = 0x820006, .range = kCelsius},
    Row{.id = trk7000::kFanSpeeds, .name = "Fan speeds", .unit = "RPM"},
    Row{.id = 0x14170310, .name = "Onboard fan speeds"},
    Row{.id = 0x14170311, .name = "TRK7K OB fan 1", .raw = 0x822003, .range = kRpm},
    Row{.id = 0x14170312, .name = "TRK7K OB fan 2", .raw = 0x822004, .range = kRpm},
    Row{.id = 0x14170313, .name = "TRK7K OB fan 3", .raw = 0x822005, .range = kRpm},
    Row{.id = 0x14170314, .name = "TRK7K OB fan 4", .raw = 0x822006, .range = kRpm},
    Row{.id = 0x14170315, .name = "TRK7K OB fan 5", .raw = 0x822007, .range = kRpm},
    Row{.id = 0x14170316, .name = "TRK7K OB fan 6", .raw = 0x822008, .range = kRpm},
    Row{.id = 0x14170317, .name = "TRK7K OB fan 7", .raw = 0x822009, .range = kRpm},
    Row{.id = trk7000::kInformation, .name = "Information"},
    Row{.id = trk7000::kFirmwareVersion, .name = "Firmware version", .raw = 0x800001},
    Row{.id = trk7000::kEcType, .name = "EC type", .raw = 0x800002},
    Row{.id = trk7000::kKernelVersion, .name = "Kernel version", .raw = 0x800003},
};

}  // namespace

ReadEntry Device_TRK7000::get_func = nullptr;

StringMap Device_TRK7000::init_device_name_map() {
  return catalogue::name_map(kRows);
}
StringMap Device_TRK7000::init_unit_map() {
  return catalogue::unit_map(kRows);
}
StringMap Device_TRK7000::init_desc_map() {
  return catalogue::option_map(kRows);
}
RawMap Device_TRK7000::init_kova_id_map() {
  return catalogue::raw_id_map(kRows);
}
RangeMap Device_TRK7000::init_bound_map() {
  return catalogue::bound_map(kRows);
}

const std::string Device_TRK7000::NAME_DEVICE = "TRK-7000";
StringMap Device_TRK7000::device_name_map = load_time::build(init_device_name_map);
StringMap Device_TRK7000::unit_map = load_time::build(init_unit_map);
StringMap Device_TRK7000::desc_map = load_time::build(init_desc_map);
RawMap Device_TRK7000::kova_id_map = load_time::build(init_kova_id_map);
RangeMap Device_TRK7000::bound_map = load_time::build(init_bound_map);
