// The memory modules' fields: the SPD words that each is read from, how they become its text, and
// what hosts see of it. The device library extracts every word from the SPD data itself.
#include <array>
#include <utility>

#include "devices/sdram/device_sdram.h"
#include "devices/sdram/sdram_func.h"
#include "devices/sdram/sdram_items.h"
#include "framework/load_time.h"
#include "framework/text_item.h"
#include "framework/text_number.h"

namespace {

using catalogue::Bounds;
using catalogue::Count;
using catalogue::Kind;
using catalogue::Role;
using catalogue::Row;
using catalogue::Shape;

constexpr unsigned int kModuleCount = 0xA00000;
constexpr unsigned int kSeries = 0xA00011;  // the part number's first word

constexpr unsigned int kDdr3 = 11;
constexpr unsigned int kDdr4 = 12;
constexpr unsigned int kDdr5 = 18;

constexpr unsigned int kProtected = 0x5750;  // "WP"

std::string memory_type(unsigned int word) {
  return SdRamFunc::getMemoryType(static_cast<unsigned char>(word));
}

// Hexadecimal digits print BCD. What stands above the date word shows in the first number.
std::string week_year(unsigned int word) {
  return hexadecimal(word >> 8, 2) + '-' + hexadecimal(word & 0xFFU, 2);
}

// The characters of the row's words, of which the first decides the status.
Status characters(const Row& row, const WordReader& device, std::string& out) {
  unsigned int word = 0;
  const Status status = device.read(*row.code, &word);
  if (status == IOT_STATUS_SUCCESS) {
    std::string text;
    text.reserve(row.words * sizeof word);
    append_characters(word, text);
    device.append_words(*row.code + 1, *row.code + row.words - 1, word, text);
    out = std::move(text);
  }
  return status;
}

// IOT_STATUS_SUCCESS for a module of the series that carries vendor-specific data.
Status check_own_series(const Row& row, const WordReader& device) {
  std::string start;
  unsigned int word = 0;
  const Status status = device.read(*row.asks_first, &word);
  append_characters(word, start);
  return status == IOT_STATUS_SUCCESS && start != sdram::kOwnSeries ? IOT_STATUS_UNSUPPORTED
                                                                    : status;
}

Status specific_data(const Row& row, const WordReader& device, std::string& out) {
  if (const Status status = check_own_series(row, device); status != IOT_STATUS_SUCCESS) {
    return status;
  }
  out = text_item::kNotAvailable;
  return characters(row, device, out);
}

Status write_protection(const Row& row, const WordReader& device, std::string& out) {
  if (const Status status = check_own_series(row, device); status != IOT_STATUS_SUCCESS) {
    return status;
  }
  unsigned int word = 0;
  const Status status = device.read(*row.code, &word);
  const unsigned int state = word & 0xFFFFU;
  const bool is_read = status == IOT_STATUS_SUCCESS;
  out = is_read && state == 0            ? "Disable"
        : is_read && state == kProtected ? "Enable"
                                         : text_item::kNotAvailable;
  return status;
}

Status module_type(const Row& row, const WordReader& device, std::string& out) {
  unsigned int memory_type = 0;
  if (const Status status = device.read(*row.asks_first, &memory_type);
      status != IOT_STATUS_SUCCESS) {
    return status;
  }
  unsigned int word = 0;
  const Status status = device.read(*row.code, &word);
  const auto type = static_cast<unsigned char>(status == IOT_STATUS_SUCCESS ? word : 0);
  // Compared as the whole word, where the memory type's own text takes the low byte.
  if (memory_type == kDdr3) {
    out = SdRamFunc::getDDR3ModuleType(type);
  } else if (memory_type == kDdr4) {
    out = SdRamFunc::getDDR4ModuleType(type);
  } else if (memory_type == kDdr5) {
    out = status == IOT_STATUS_READ_FAILED ? text_item::kNotAvailable
                                           : SdRamFunc::getDDR5ModuleType(type);
  }
  return status;
}

constexpr Shape kText{.role = Role::kIdentity, .kind = Kind::kText};
constexpr Shape kStateText{.role = Role::kState, .kind = Kind::kText};
constexpr Shape kInteger{.role = Role::kIdentity, .kind = Kind::kInteger, .through_text = true};
constexpr Shape kVolts{
    .role = Role::kIdentity, .kind = Kind::kReal, .divisor = 1000, .through_text = true};
constexpr Shape kCelsius{.role = Role::kReading,
                         .kind = Kind::kReal,
                         .divisor = 100,
                         .offset = -273.15,
                         .through_text = true};

// In the order in which a module's fields are read; codes are the first module's. Hosts match on
// the names and units, the spelling of "Celsuis" and the kinds (speed and bank are strings)
// included.
constexpr std::array kRows{
    Row{.id = sdram::kPartNumber,
        .name = "Part Number",
        .code = 0xA00011,
        .words = 5,
        .as = kText,
        .decode = characters,
        .is_private = true,
        .note = "20 characters, trailing blanks included"},
    Row{.id = sdram::kMemoryType,
        .name = "Memory Type",
        .code = 0xA00001,
        .as = kText,
        .text = memory_type,
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
        .decode = module_type,
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
        .text = week_year,
        .note = "year and week: 23-15"},
    Row{.id = sdram::kRank, .name = "Rank", .unit = "Ranks", .code = 0xA00005, .as = kInteger},
    Row{.id = sdram::kBank, .name = "Bank", .code = 0xA00007, .as = kText},
    Row{.id = sdram::kModuleManufacturer,
        .name = "Module Manufacture",
        .code = 0xA0000B,
        .as = kText,
        .text = SdRamFunc::getManufacture,
        .note = "name by JEP106"},
    Row{.id = sdram::kDramManufacturer,
        .name = "DRAM Manufacture",
        .code = 0xA0000C,
        .as = kText,
        .text = SdRamFunc::getManufacture,
        .note = "name by JEP106"},
    Row{.id = sdram::kSpecificData,
        .name = "Specific Data",
        .code = 0xA00021,
        .words = 8,
        .asks_first = kSeries,
        .as = kText,
        .decode = specific_data,
        .is_private = true,
        .note = "32 characters; series VLX- only, else N/A"},
    Row{.id = sdram::kWriteProtection,
        .name = "Write Protection",
        .code = 0xA0000A,
        .asks_first = kSeries,
        .as = kStateText,
        .decode = write_protection,
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

constexpr int kPlace = load_time::place(6);

}  // namespace

ReadEntry Device_SDRAM::get_func = nullptr;

// The module number has eight bits in an item ID; the library tells sixteen modules apart.
constinit const catalogue::Sheet sdram::kSheet{
    .name = "SDRAM",
    .title = "Memory modules",
    .id = sdram::kFamily,
    .presence_code = kModuleCount,
    .rows = kRows,
    .instances = catalogue::Instances{.word = "module",
                                      .max = 255,
                                      .code_step = 0x100,
                                      .package_suffix = "{i}",
                                      .counted_by = kModuleCounts},
    .status_without_value = IOT_STATUS_UNSUPPORTED,  // a field of another series
    .note =
        R"(The library tells sixteen modules apart. A field that cannot be read is "N/A" in the document, or
0 where it is a number.)"};

constinit const text_item::Family sdram::kItems{.sheet = sdram::kSheet,
                                                .places = text_item::places_of(kRows),
                                                .no_such_field = IOT_STATUS_UNDEFINED_ITEM,
                                                .names = Device_SDRAM::device_name_map,
                                                .units = Device_SDRAM::unit_map,
                                                .bounds = Device_SDRAM::bound_map};

StringMap Device_SDRAM::init_device_name_map() {
  return catalogue::name_map(kRows);
}
StringMap Device_SDRAM::init_unit_map() {
  return catalogue::unit_map(kRows);
}
RangeMap Device_SDRAM::init_bound_map() {
  return catalogue::bound_map(kRows);
}

[[gnu::init_priority(kPlace)]] StringMap Device_SDRAM::device_name_map =
    load_time::build(init_device_name_map);
[[gnu::init_priority(kPlace)]] StringMap Device_SDRAM::unit_map = load_time::build(init_unit_map);
[[gnu::init_priority(kPlace)]] RangeMap Device_SDRAM::bound_map = load_time::build(init_bound_map);
