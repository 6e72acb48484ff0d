// Catalogue of the memory modules: the fields with their names, units, ranges and JSON kinds, and
// the class-static maps made from them.
#include <array>

#include "devices/sdram/device_sdram.h"
#include "devices/sdram/sdram_items.h"
#include "framework/item_id.h"
#include "framework/load_time.h"

namespace {

using catalogue::Bounds;
using catalogue::Count;
using catalogue::Kind;
using catalogue::Role;
using catalogue::Row;
using catalogue::Shape;

constexpr unsigned int kModuleCount = 0xA00000;
constexpr unsigned int kSeries = 0xA00011;  // the part number's first word

constexpr Shape kText{.role = Role::kIdentity, .kind = Kind::kText};
constexpr Shape kStateText{.role = Role::kState, .kind = Kind::kText};
constexpr Shape kInteger{.role = Role::kIdentity, .kind = Kind::kInteger};
constexpr Shape kVolts{.role = Role::kIdentity, .kind = Kind::kReal, .scale = 0.001};
constexpr Shape kCelsius{
    .role = Role::kReading, .kind = Kind::kReal, .scale = 0.01, .offset = -273.15};

// In the order in which a module's fields are read; codes are the first module's. Hosts match on
// the names and units, the spelling of "Celsuis" and the kinds (speed and bank are strings)
// included.
constexpr std::array kRows{
    Row{.id = sdram::kPartNumber,
        .name = "Part Number",
        .code = 0xA00011,
        .words = 5,
        .as = kText,
        .is_private = true,
        .note = "20 characters, trailing blanks included"},
    Row{.id = sdram::kMemoryType,
        .name = "Memory Type",
        .code = 0xA00001,
        .as = kText,
        .note = "name of the DRAM device type, SPD byte 2"},
    Row{.id = sdram::kMemorySpeed,
        .name = "Memory Speed",
        .unit = "MT/s",
        .code = 0xA00004,
        .as = kText},
    Row{.id = sdram::kModuleType,
        .name = "Module Type",
        .code = 0xA00002,
        .asks_first = 0xA00001,
        .as = kText,
        .note = "name of the module type of DDR3, DDR4 and DDR5, else N/A"},
    Row{.id = sdram::kModuleSize,
        .name = "Module Size",
        .unit = "GB",
        .code = 0xA00003,
        .as = kInteger},
    Row{.id = sdram::kWeekYear,
        .name = "Week Year",
        .code = 0xA00008,
        .as = kText,
        .note = "year and week: 23-15"},
    Row{.id = sdram::kRank, .name = "Rank", .unit = "Ranks", .code = 0xA00005, .as = kInteger},
    Row{.id = sdram::kBank, .name = "Bank", .code = 0xA00007, .as = kText},
    Row{.id = sdram::kModuleManufacturer,
        .name = "Module Manufacture",
        .code = 0xA0000B,
        .as = kText,
        .note = "name by JEP106"},
    Row{.id = sdram::kDramManufacturer,
        .name = "DRAM Manufacture",
        .code = 0xA0000C,
        .as = kText,
        .note = "name by JEP106"},
    Row{.id = sdram::kSpecificData,
        .name = "Specific Data",
        .code = 0xA00021,
        .words = 8,
        .asks_first = kSeries,
        .as = kText,
        .is_private = true,
        .note = "32 characters; series VLX- only, else N/A"},
    Row{.id = sdram::kWriteProtection,
        .name = "Write Protection",
        .code = 0xA0000A,
        .asks_first = kSeries,
        .as = kStateText,
        .note = "Enable or Disable; series VLX- only, else N/A"},
    Row{.id = sdram::kVoltage, .name = "Voltage", .unit = "V", .code = 0xA00006, .as = kVolts},
    Row{.id = sdram::kTemperature,
        .name = "Temperature",
        .unit = "Celsuis",
        .code = 0xA00009,
        .range = Bounds{0, 100},
        .as = kCelsius,
        .note = "raw is hundredths of a kelvin"},
};

constexpr std::array kModuleCounts{Count{.code = kModuleCount}};

// The module number has eight bits in an item ID; the library tells sixteen modules apart.
constexpr catalogue::Sheet kSheet{
    .name = "SDRAM",
    .title = "Memory modules",
    .id = item_id::kSdram,
    .presence_code = kModuleCount,
    .rows = kRows,
    .instances = catalogue::Instances{.word = "module",
                                      .max = 255,
                                      .code_step = 0x100,
                                      .package_name = "SDRAM{i}",
                                      .counted_by = kModuleCounts},
    .note =
        R"(The library tells sixteen modules apart. A field that cannot be read is "N/A" in the document, or
0 where it is a number.)"};

}  // namespace

ReadEntry Device_SDRAM::get_func = nullptr;

const catalogue::Sheet& sdram::sheet() {
  return kSheet;
}

std::span<const Row> sdram::rows() {
  return kRows;
}

StringMap Device_SDRAM::init_device_name_map() {
  return catalogue::name_map(kRows);
}
StringMap Device_SDRAM::init_unit_map() {
  return catalogue::unit_map(kRows);
}
RangeMap Device_SDRAM::init_bound_map() {
  return catalogue::bound_map(kRows);
}

StringMap Device_SDRAM::device_name_map = load_time::build(init_device_name_map);
StringMap Device_SDRAM::unit_map = load_time::build(init_unit_map);
RangeMap Device_SDRAM::bound_map = load_time::build(init_bound_map);
