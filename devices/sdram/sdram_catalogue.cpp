// Catalogue of the memory modules: the fields with their names, units, ranges and JSON kinds, and
// the class-static maps made from them.
#include <array>

#include "devices/sdram/device_sdram.h"
#include "devices/sdram/sdram_items.h"
#include "framework/load_time.h"

namespace {

using catalogue::Bounds;
using catalogue::Row;
using catalogue::TextKind;

// In the order in which a module's fields are read. Hosts match on the names and units, the
// spelling of "Celsuis" and the kinds (speed and bank are strings) included.
constexpr std::array kRows{
    Row{.id = sdram::kPartNumber, .name = "Part Number"},
    Row{.id = sdram::kMemoryType, .name = "Memory Type"},
    Row{.id = sdram::kMemorySpeed, .name = "Memory Speed", .unit = "MT/s"},
    Row{.id = sdram::kModuleType, .name = "Module Type"},
    Row{.id = sdram::kModuleSize, .name = "Module Size", .unit = "GB", .kind = TextKind::kInteger},
    Row{.id = sdram::kWeekYear, .name = "Week Year"},
    Row{.id = sdram::kRank, .name = "Rank", .unit = "Ranks", .kind = TextKind::kInteger},
    Row{.id = sdram::kBank, .name = "Bank"},
    Row{.id = sdram::kModuleManufacturer, .name = "Module Manufacture"},
    Row{.id = sdram::kDramManufacturer, .name = "DRAM Manufacture"},
    Row{.id = sdram::kSpecificData, .name = "Specific Data"},
    Row{.id = sdram::kWriteProtection, .name = "Write Protection"},
    Row{.id = sdram::kVoltage, .name = "Voltage", .unit = "V", .kind = TextKind::kReal},
    Row{.id = sdram::kTemperature,
        .name = "Temperature",
        .unit = "Celsuis",
        .range = Bounds{0, 100},
        .kind = TextKind::kReal},
};

}  // namespace

ReadEntry Device_SDRAM::get_func = nullptr;

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
