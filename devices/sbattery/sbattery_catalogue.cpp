// The battery's fields: the register that each is read from, how its words become its text, and
// what hosts see of it. The commands are those of the Smart Battery Data Specification, revision
// 1.1, except the presence probe, the manufacturer name (four characters a read, where the standard
// has one block) and the gauge's own state of health.
#include <array>

#include "devices/sbattery/device_sbattery.h"
#include "devices/sbattery/sbattery_items.h"
#include "framework/text_item.h"
#include "framework/text_number.h"

namespace {

using catalogue::Bounds;
using catalogue::Kind;
using catalogue::Package;
using catalogue::Role;
using catalogue::Row;
using catalogue::Shape;
using catalogue::Word;

constexpr unsigned int kCurrentCode = 0xB0000A;

constexpr unsigned int kDischarging = 0x0040;       // of BatteryStatus
constexpr unsigned int kErrorCode = 0x000F;         // of BatteryStatus
constexpr unsigned int kTimeNotApplicable = 65535;  // of the average times

// From the year down; years count from 1980.
std::string date(unsigned int word) {
  return To_String((word >> 9) + 1980U) + '/' + To_String((word >> 5) & 0xFU) + '/' +
         To_String(word & 0x1FU);
}

std::string serial_number(unsigned int word) {
  std::string digits = hexadecimal(word, 4);
  for (char& digit : digits) {
    digit = digit >= 'a' ? static_cast<char>(digit - 'a' + 'A') : digit;
  }
  return "0x" + digits;
}

std::string error_code(unsigned int battery_status) {
  return "0x" + hexadecimal(battery_status & kErrorCode);
}

Status charging_state(const Row& row, const WordReader& device, std::string& out) {
  unsigned int word = 0;
  if (const Status status = device.read(*row.asks_first, &word); status != IOT_STATUS_SUCCESS) {
    return status;
  }
  if ((word & 0xFFFFU) == 0) {
    out = "AC Power";  // nothing flows: the machine runs on external power
    return IOT_STATUS_SUCCESS;
  }
  // Into the variable of the current, which stands for a status that is not stored.
  const Status status = device.read(*row.code, &word);
  if (status == IOT_STATUS_SUCCESS) {
    out = (word & kDischarging) != 0 ? "Discharging" : "Charging";
  }
  return status;
}

Status manufacturer_name(const Row& row, const WordReader& device, std::string& out) {
  return device.append_words(*row.code, *row.code + row.words - 1, 0, out);
}

Status average_time(const Row& row, const WordReader& device, std::string& out) {
  unsigned int current = 0;
  const Status current_status = device.read(*row.asks_first, &current);
  // An unreadable current does not tell that the battery is idle.
  if (current_status == IOT_STATUS_SUCCESS && current == 0) {
    return IOT_STATUS_NOT_FOUND;
  }
  unsigned int minutes = 0;
  const Status status = device.read(*row.code, &minutes);
  if (status != IOT_STATUS_SUCCESS) {
    return status;
  }
  if (minutes == kTimeNotApplicable) {
    return IOT_STATUS_NOT_FOUND;
  }
  out = To_String(minutes / 60U) + " h " + To_String(minutes % 60U) + " m";
  return IOT_STATUS_SUCCESS;
}

constexpr Shape kIdentityText{.role = Role::kIdentity, .kind = Kind::kText};
constexpr Shape kStateText{.role = Role::kState, .kind = Kind::kText};
constexpr Shape kReadingText{.role = Role::kReading, .kind = Kind::kText};
constexpr Shape kDesign{.role = Role::kIdentity, .kind = Kind::kInteger, .through_text = true};
constexpr Shape kReading{.role = Role::kReading, .kind = Kind::kInteger, .through_text = true};
constexpr Shape kSignedReading{.role = Role::kReading,
                               .kind = Kind::kInteger,
                               .word = Word::kLow16Signed,
                               .through_text = true};
constexpr Shape kCelsius{.role = Role::kReading,
                         .kind = Kind::kReal,
                         .scale = 0.1,
                         .offset = -273.15,
                         .through_text = true};

constexpr Bounds kWord{0, 65535};
constexpr Bounds kSignedWord{-32768, 32767};
constexpr Bounds kPercent{0, 100};

constexpr std::string_view kTimeNote =
    "text such as 2 h 5 m; N/A, and in a single read `IOT_STATUS_NOT_FOUND`, while no current "
    "flows "
    "or the battery cannot tell";

// In the order in which the fields are read. Hosts match on the names and units, their uneven
// spelling included. The average times are texts ("2 h 5 m") that carry the unit and the range
// of the registers behind them.
constexpr std::array kRows{
    Row{.id = sbattery::kBatteryStatus,
        .name = "Battery Status",
        .code = 0xB00016,
        .asks_first = kCurrentCode,
        .as = kStateText,
        .decode = charging_state,
        .note = "AC Power while no current flows, else Charging or Discharging"},
    Row{.id = sbattery::kManufacturerName,
        .name = "Manufacturer Name",
        .code = 0xB00024,
        .words = 5,
        .as = kIdentityText,
        .decode = manufacturer_name,
        .note = "20 characters, trailing blanks included"},
    Row{.id = sbattery::kManufacturerDate,
        .name = "Manufacturer Date",
        .code = 0xB0001B,
        .as = kIdentityText,
        .text = date,
        .note = "year/month/day: 2025/1/31"},
    Row{.id = sbattery::kSerialNumber,
        .name = "Serial Number",
        .code = 0xB0001C,
        .as = kIdentityText,
        .text = serial_number,
        .is_private = true,
        .note = "four hexadecimal digits: 0x0012"},
    Row{.id = sbattery::kDesignVoltage,
        .name = "Design Voltage",
        .unit = "mV",
        .code = 0xB00019,
        .range = Bounds{7000, 18000},
        .as = kDesign},
    Row{.id = sbattery::kDesignCapacity,
        .name = "Design Capacity",
        .unit = "mAh",
        .code = 0xB00018,
        .range = kWord,
        .as = kDesign},
    Row{.id = sbattery::kVoltage,
        .name = "Voltage",
        .unit = "mV",
        .code = 0xB00009,
        .range = kWord,
        .as = kReading},
    Row{.id = sbattery::kCurrent,
        .name = "Current",
        .unit = "mA",
        .code = kCurrentCode,
        .range = kSignedWord,
        .as = kSignedReading,
        .note = "negative while discharging"},
    Row{.id = sbattery::kRelativeStateOfCharge,
        .name = "Relative State Of Charge",
        .unit = "%",
        .code = 0xB0000D,
        .range = kPercent,
        .as = kReading},
    Row{.id = sbattery::kAbsoluteStateOfCharge,
        .name = "Absolute State Of Charge",
        .unit = "%",
        .code = 0xB0000E,
        .range = kPercent,
        .as = kReading},
    Row{.id = sbattery::kStateOfHealth,
        .name = "SoH",
        .unit = "%",
        .code = 0xB0004F,
        .range = kPercent,
        .as = kReading},
    Row{.id = sbattery::kFullChargeCapacity,
        .name = "Full Charge Capacity",
        .unit = "mAh",
        .code = 0xB00010,
        .range = kWord,
        .as = kReading},
    Row{.id = sbattery::kRemainingCapacity,
        .name = "Remaining Capacity",
        .unit = "mAh",
        .code = 0xB0000F,
        .range = kWord,
        .as = kReading},
    Row{.id = sbattery::kAverageTimeToEmpty,
        .name = "Average Time To Empty",
        .unit = "min",
        .code = 0xB00012,
        .asks_first = kCurrentCode,
        .range = kWord,
        .as = kReadingText,
        .decode = average_time,
        .note = kTimeNote},
    Row{.id = sbattery::kAverageTimeToFull,
        .name = "Average Time To Full",
        .unit = "min",
        .code = 0xB00013,
        .asks_first = kCurrentCode,
        .range = kWord,
        .as = kReadingText,
        .decode = average_time,
        .note = kTimeNote},
    Row{.id = sbattery::kCycleCount,
        .name = "CycleCount",
        .unit = "cycles",
        .code = 0xB00017,
        .range = kWord,
        .as = kReading},
    Row{.id = sbattery::kTemperature,
        .name = "Temperature",
        .unit = "Celsuis",
        .code = 0xB00008,
        .range = Bounds{0, 100},
        .as = kCelsius,
        .note = "raw is tenths of a kelvin"},
    Row{.id = sbattery::kErrorCodes,
        .name = "ErrorCodes",
        .code = 0xB00016,
        .as = kStateText,
        .text = error_code,
        .note = "error bits 3..0 of BatteryStatus: 0x7"},
};

constexpr std::array kPackages{Package{.id = sbattery::kFamily, .unit_id = sbattery::kFamily}};

void assign_each(const StringMap& from, StringMap* to) {
  for (const auto& [id, text] : from) {
    (*to)[id] = text;
  }
}

}  // namespace

ReadEntry Device_SBATTERY::get_func = nullptr;
StringMap Device_SBATTERY::device_name_map;  // the last at load: they tell no place
StringMap Device_SBATTERY::unit_map;
RangeMap Device_SBATTERY::bound_map;

constinit const catalogue::Sheet sbattery::kSheet{
    .name = "SMART BATTERY",
    .title = "Smart battery",
    .id = sbattery::kFamily,
    .presence_code = 0xB00000,
    .present_when_readable = true,
    .rows = kRows,
    .packages = kPackages,
    .status_without_value = IOT_STATUS_NOT_FOUND,  // a time, while no current flows
    .note =
        R"(A field that cannot be read is "N/A" in the document, or 0 where it is a number. Codes are `0xB00000`
and the Smart Battery Data command, except those of the manufacturer's name and the state of
health.)"};

constinit const text_item::Family sbattery::kItems{.sheet = sbattery::kSheet,
                                                   .places = text_item::places_of(kRows),
                                                   .no_such_field = IOT_STATUS_SUCCESS,
                                                   .names = Device_SBATTERY::device_name_map,
                                                   .units = Device_SBATTERY::unit_map,
                                                   .bounds = Device_SBATTERY::bound_map};

void Device_SBATTERY::init_device_name_map() {
  assign_each(catalogue::name_map(kRows), &device_name_map);
}
void Device_SBATTERY::init_device_unit_map() {
  assign_each(catalogue::unit_map(kRows), &unit_map);
}
void Device_SBATTERY::init_bound_map() {
  bound_map.merge(catalogue::bound_map(kRows));
}
