// Catalogue of the accelerometer: its items with their names, units, option lists, device codes
// and ranges, and the class-static maps made from them.
#include <array>

#include "devices/gsensor/device_gsensor.h"
#include "devices/gsensor/gsensor_items.h"
#include "framework/load_time.h"

namespace {

using catalogue::Bounds;
using catalogue::Kind;
using catalogue::Package;
using catalogue::Role;
using catalogue::Row;
using catalogue::Shape;
using catalogue::with_role;
using catalogue::Word;

constexpr unsigned int kModeBlock = 0x14150710;
constexpr unsigned int kOffsetBlock = 0x14150720;
constexpr unsigned int kRateBlock = 0x14150730;
constexpr unsigned int kRangeBlock = 0x14150740;

constexpr Shape kMode{.role = Role::kSetting,
                      .kind = Kind::kSwitch,
                      .word = Word::kLowByteInDocument,
                      .normalised = true};
constexpr Shape kCode{
    .role = Role::kSetting, .kind = Kind::kInteger, .word = Word::kLowByteInDocument};
constexpr Shape kReading{.role = Role::kReading,
                         .kind = Kind::kReal,
                         .word = Word::kSigned,
                         .scale = Device_GSensor::FACTOR};
constexpr Shape kOffset = with_role(kReading, Role::kSetting);

constexpr std::string_view kOfferedRanges = "2|4|8|16";

// Code 0 can be read, but is not offered.
constexpr std::string_view kOfferedRates = "1|2|3|4|5|6|7|8|9|10|11|12|13|14|15";

// The line feeds are part of the published text.
constexpr std::string_view kDataRates =
    "0=0.098Hz|1=0.195Hz|2=0.39Hz|3=0.782Hz|4=1.563Hz|\n"
    "5=3.125Hz|6=6.25Hz|7=12.5Hz|8=25Hz|9=50Hz|10=100Hz|\n"
    "11=200Hz|12=400Hz|13=800Hz|14=1600Hz|15=3200Hz";

constexpr Row mode(unsigned int id, std::string_view name, std::string_view options,
                   unsigned int code) {
  return {
      .id = id, .name = name, .options = options, .code = code, .range = Bounds{0, 1}, .as = kMode};
}

constexpr Row offset(unsigned int id, std::string_view name, unsigned int code) {
  return {.id = id, .name = name, .unit = "G", .code = code, .range = Bounds{-2, 2}, .as = kOffset};
}

// The measuring range's heading has no name, and the readings' unit stands on theirs.
constexpr std::array kRows{
    Row{.id = gsensor::kPresence, .name = "Available", .code = 0x400000},
    Row{.id = gsensor::kSettings, .name = "Settings"},
    Row{.id = kModeBlock, .name = "Modes", .as = kMode},
    mode(0x14150711, "Measure mode", "0=standby|1=measurement", 0x430000),
    mode(0x14150712, "Low power mode", "0=normal operation|1=reduced power operation", 0x440000),
    mode(0x14150713, "Sleep mode", "0=normal mode|1=sleep mode", 0x440001),
    Row{.id = kOffsetBlock, .name = "Offset settings", .as = kOffset},
    offset(0x14150721, "Offset X", 0x420000),
    offset(0x14150722, "Offset Y", 0x420001),
    offset(0x14150723, "Offset Z", 0x420002),
    Row{.id = kRateBlock, .name = "Data rates", .offered = kOfferedRates, .as = kCode},
    Row{.id = 0x14150731,
        .name = "Normal mode data rate",
        .options = kDataRates,
        .offered = kOfferedRates,
        .code = 0x450000,
        .range = Bounds{0, 15},
        .as = kCode,
        .note = "0 can be read"},
    Row{.id = 0x14150732,
        .name = "Sleep mode data rate",
        .options = "1=1Hz|2=2Hz|4=4Hz|8=8Hz",
        .offered = "1|2|4|8",
        .code = 0x450001,
        .range = Bounds{1, 8},
        .as = kCode},
    Row{.id = kRangeBlock, .offered = kOfferedRanges, .as = kCode},
    Row{.id = 0x14150741,
        .name = "G-range",
        .options = "2=-2~+2G|4=-4~+4G|8=-8~+8G|16=-16~+16G",
        .offered = kOfferedRanges,
        .code = 0x430001,
        .range = Bounds{2, 16},
        .as = kCode},
    Row{.id = gsensor::kData, .name = "Data", .unit = "G", .as = kReading},
    Row{.id = 0x14150901, .name = "X", .code = 0x410000, .as = kReading},
    Row{.id = 0x14150902, .name = "Y", .code = 0x410001, .as = kReading},
    Row{.id = 0x14150903, .name = "Z", .code = 0x410002, .as = kReading},
};

constexpr std::array kPackages{
    Package{.id = gsensor::kData, .unit_id = gsensor::kData},
    Package{.id = gsensor::kSettings},
};

constexpr int kPlace = load_time::place(5);

}  // namespace

constinit const catalogue::RowTable gsensor::kTable(kRows, {.settings = kSettings});
constinit const catalogue::Ids gsensor::kModes = items_under(kRows, kModeBlock);
constinit const catalogue::Ids gsensor::kOffsets = items_under(kRows, kOffsetBlock);
constinit const catalogue::Ids gsensor::kRates = items_under(kRows, kRateBlock);
constinit const catalogue::Ids gsensor::kRanges = items_under(kRows, kRangeBlock);
constinit const catalogue::Ids gsensor::kReadings = items_under(kRows, kData);

constinit const catalogue::Sheet gsensor::kSheet{
    .name = "GSensor",
    .title = "Accelerometer",
    .id = gsensor::kFamily,
    .presence_code = *kRows.front().code,
    .rows = kRows,
    .packages = kPackages,
    .status_when_read = IOT_STATUS_READ_FAILED,
    .note =
        R"(A single read fills the value and still answers `IOT_STATUS_READ_FAILED`: see the
[host guide](host-guide.md#the-accelerometers-status).)"};

ReadEntry Device_GSensor::get_func = nullptr;
WriteEntry Device_GSensor::set_func = nullptr;

[[gnu::init_priority(kPlace)]] const std::string Device_GSensor::NAME_DEVICE =
    load_time::build(+[] { return std::string(gsensor::kSheet.name); });
[[gnu::init_priority(kPlace)]] StringMap Device_GSensor::device_name_map =
    load_time::build(init_device_name_map);
[[gnu::init_priority(kPlace)]] StringMap Device_GSensor::unit_map = load_time::build(init_unit_map);
[[gnu::init_priority(kPlace)]] StringMap Device_GSensor::desc_map = load_time::build(init_desc_map);
[[gnu::init_priority(kPlace)]] RawMap Device_GSensor::kova_id_map =
    load_time::build(init_kova_id_map);
[[gnu::init_priority(kPlace)]] RangeMap Device_GSensor::bound_map =
    load_time::build(init_bound_map);
