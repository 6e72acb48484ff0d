// Catalogue of the battery: the fields with their names, units, ranges and JSON kinds, and the
// class-static maps made from them.
#include <array>

#include "devices/sbattery/device_sbattery.h"
#include "devices/sbattery/sbattery_items.h"

namespace {

using catalogue::Bounds;
using catalogue::Row;
using catalogue::TextKind;

constexpr Bounds kWord{0, 65535};
constexpr Bounds kSignedWord{-32768, 32767};
constexpr Bounds kPercent{0, 100};

// In the order in which the fields are read. Hosts match on the names and units, their uneven
// spelling included. The average times are texts ("2 h 5 m") that carry the unit and the range
// of the registers behind them.
constexpr std::array kRows{
    Row{.id = sbattery::kBatteryStatus, .name = "Battery Status"},
    Row{.id = sbattery::kManufacturerName, .name = "Manufacturer Name"},
    Row{.id = sbattery::kManufacturerDate, .name = "Manufacturer Date"},
    Row{.id = sbattery::kSerialNumber, .name = "Serial Number"},
    Row{.id = sbattery::kDesignVoltage,
        .name = "Design Voltage",
        .unit = "mV",
        .range = Bounds{7000, 18000},
        .kind = TextKind::kInteger},
    Row{.id = sbattery::kDesignCapacity,
        .name = "Design Capacity",
        .unit = "mAh",
        .range = kWord,
        .kind = TextKind::kInteger},
    Row{.id = sbattery::kVoltage,
        .name = "Voltage",
        .unit = "mV",
        .range = kWord,
        .kind = TextKind::kInteger},
    Row{.id = sbattery::kCurrent,
        .name = "Current",
        .unit = "mA",
        .range = kSignedWord,
        .kind = TextKind::kInteger},
    Row{.id = sbattery::kRelativeStateOfCharge,
        .name = "Relative State Of Charge",
        .unit = "%",
        .range = kPercent,
        .kind = TextKind::kInteger},
    Row{.id = sbattery::kAbsoluteStateOfCharge,
        .name = "Absolute State Of Charge",
        .unit = "%",
        .range = kPercent,
        .kind = TextKind::kInteger},
    Row{.id = sbattery::kStateOfHealth,
        .name = "SoH",
        .unit = "%",
        .range = kPercent,
        .kind = TextKind::kInteger},
    Row{.id = sbattery::kFullChargeCapacity,
        .name = "Full Charge Capacity",
        .unit = "mAh",
        .range = kWord,
        .kind = TextKind::kInteger},
    Row{.id = sbattery::kRemainingCapacity,
        .name = "Remaining Capacity",
        .unit = "mAh",
        .range = kWord,
        .kind = TextKind::kInteger},
    Row{.id = sbattery::kAverageTimeToEmpty,
        .name = "Average Time To Empty",
        .unit = "min",
        .range = kWord},
    Row{.id = sbattery::kAverageTimeToFull,
        .name = "Average Time To Full",
        .unit = "min",
        .range = kWord},
    Row{.id = sbattery::kCycleCount,
        .name = "CycleCount",
        .unit = "cycles",
        .range = kWord,
        .kind = TextKind::kInteger},
    Row{.id = sbattery::kTemperature,
        .name = "Temperature",
        .unit = "Celsuis",
        .range = Bounds{0, 100},
        .kind = TextKind::kReal},
    Row{.id = sbattery::kErrorCodes, .name = "ErrorCodes"},
};

void assign_each(const StringMap& from, StringMap* to) {
  for (const auto& [id, text] : from) {
    (*to)[id] = text;
  }
}

}  // namespace

ReadEntry Device_SBATTERY::get_func = nullptr;
StringMap Device_SBATTERY::device_name_map;
StringMap Device_SBATTERY::unit_map;
RangeMap Device_SBATTERY::bound_map;

std::span<const Row> sbattery::rows() {
  return kRows;
}

void Device_SBATTERY::init_device_name_map() {
  assign_each(catalogue::name_map(kRows), &device_name_map);
}
void Device_SBATTERY::init_device_unit_map() {
  assign_each(catalogue::unit_map(kRows), &unit_map);
}
void Device_SBATTERY::init_bound_map() {
  bound_map.merge(catalogue::bound_map(kRows));
}
