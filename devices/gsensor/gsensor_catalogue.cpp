// Catalogue of the accelerometer: its items with their names, units, option lists, device codes
// and ranges, and the class-static maps made from them.
#include <array>

#include "devices/gsensor/device_gsensor.h"
#include "devices/gsensor/gsensor_items.h"
#include "framework/load_time.h"

namespace {

using catalogue::Bounds;
using catalogue::Row;

// The line feeds are part of the published text.
constexpr std::string_view kDataRates =
    "0=0.098Hz|1=0.195Hz|2=0.39Hz|3=0.782Hz|4=1.563Hz|\n"
    "5=3.125Hz|6=6.25Hz|7=12.5Hz|8=25Hz|9=50Hz|10=100Hz|\n"
    "11=200Hz|12=400Hz|13=800Hz|14=1600Hz|15=3200Hz";

// The measuring range has no heading, and the readings' unit stands on theirs.
constexpr std::array kRows{
    Row{.id = gsensor::kPresence, .name = "Available", .raw = 0x400000},
    Row{.id = gsensor::kSettings, .name = "Settings"},
    Row{.id = 0x14150710, .name = "Modes"},
    Row{.id = 0x14150711,
        .name = "Measure mode",
        .options = "0=standby|1=measurement",
        .raw = 0x430000,
        .range = Bounds{0, 1}},
    Row{.id = 0x14150712,
        .name = "Low power mode",
        .options = "0=normal operation|1=reduced power operation",
        .raw = 0x440000,
        .range = Bounds{0, 1}},
    Row{.id = 0x14150713,
        .name = "Sleep mode",
        .options = "0=normal mode|1=sleep mode",
        .raw = 0x440001,
        .range = Bounds{0, 1}},
    Row{.id = 0x14150720, .name = "Offset settings"},
    Row{.id = 0x14150721, .name = "Offset X", .unit = "G", .raw = 0x420000, .range = Bounds{-2, 2}},
    Row{.id = 0x14150722, .name = "Offset Y", .unit = "G", .raw = 0x420001, .range = Bounds{-2, 2}},
    Row{.id = 0x14150723, .name = "Offset Z", .unit = "G", .raw = 0x420002, .range = Bounds{-2, 2}},
    Row{.id = 0x14150730, .name = "Data rates"},
    Row{.id = gsensor::kNormalRate,
        .name = "Normal mode data rate",
        .options = kDataRates,
        .raw = 0x450000,
        .range = Bounds{0, 15}},
    Row{.id = gsensor::kSleepRate,
        .name = "Sleep mode data rate",
        .options = "1=1Hz|2=2Hz|4=4Hz|8=8Hz",
        .raw = 0x450001,
        .range = Bounds{1, 8}},
    Row{.id = gsensor::kRange,
        .name = "G-range",
        .options = "2=-2~+2G|4=-4~+4G|8=-8~+8G|16=-16~+16G",
        .raw = 0x430001,
        .range = Bounds{2, 16}},
    Row{.id = gsensor::kData, .name = "Data", .unit = "G"},
    Row{.id = 0x14150901, .name = "X", .raw = 0x410000},
    Row{.id = 0x14150902, .name = "Y", .raw = 0x410001},
    Row{.id = 0x14150903, .name = "Z", .raw = 0x410002},
};

}  // namespace

ReadEntry Device_GSensor::get_func = nullptr;
WriteEntry Device_GSensor::set_func = nullptr;

StringMap Device_GSensor::init_device_name_map() {
  return catalogue::name_map(kRows);
}
StringMap Device_GSensor::init_unit_map() {
  return catalogue::unit_map(kRows);
}
StringMap Device_GSensor::init_desc_map() {
  return catalogue::option_map(kRows);
}
RawMap Device_GSensor::init_kova_id_map() {
  return catalogue::raw_id_map(kRows);
}
RangeMap Device_GSensor::init_bound_map() {
  return catalogue::bound_map(kRows);
}

const std::string Device_GSensor::NAME_DEVICE = "GSensor";
StringMap Device_GSensor::device_name_map = load_time::build(init_device_name_map);
StringMap Device_GSensor::unit_map = load_time::build(init_unit_map);
StringMap Device_GSensor::desc_map = load_time::build(init_desc_map);
RawMap Device_GSensor::kova_id_map = load_time::build(init_kova_id_map);
RangeMap Device_GSensor::bound_map = load_time::build(init_bound_map);
