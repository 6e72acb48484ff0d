// Decoding of SPD fields: where each stands in the device library, and what its words mean.
#include "devices/sdram/sdram_func.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <span>
#include <string_view>

#include "devices/sdram/jep106.h"
#include "devices/sdram/sdram_items.h"
#include "framework/raw_text.h"
#include "framework/text_item.h"
#include "framework/text_number.h"

namespace {

using text_item::kNotAvailable;

// The device library's selectors of the fields, bits 7..0 of a code.
enum Selector : unsigned int {
  kModuleCount = 0x00,
  kDramType = 0x01,
  kModuleTypeCode = 0x02,
  kSizeGigabytes = 0x03,
  kDataRate = 0x04,
  kRankCount = 0x05,
  kMillivolts = 0x06,
  kBankCount = 0x07,
  kDateWord = 0x08,
  kCentikelvin = 0x09,
  kProtectionWord = 0x0A,
  kModuleMaker = 0x0B,
  kDramMaker = 0x0C,
  kPartNumberFirst = 0x11,
  kPartNumberLast = 0x15,
  kSpecificDataFirst = 0x21,
  kSpecificDataLast = 0x28,
};

constexpr unsigned int kOwnSeries = 0x564C582D;  // "VLX-"
constexpr unsigned int kProtected = 0x5750;      // "WP"

constexpr unsigned int kDdr3 = 11;
constexpr unsigned int kDdr4 = 12;
constexpr unsigned int kDdr5 = 18;

// DRAM device types, SPD byte 2. 13 to 17 are reserved or low-power types, which have no name here.
constexpr std::array<std::string_view, kDdr5 + 1> kMemoryTypes{
    "Reserved",
    "Standard FPM DRAM",
    "EDO",
    "Pipelined Nibble",
    "SDRAM",
    "ROM",
    "DDR SGRAM",
    "DDR SDRAM",
    "DDR2 SDRAM",
    "DDR2 SDRAM FB-DIMM",
    "DDR2 SDRAM FB-DIMM PROBE",
    "DDR3 SDRAM",
    "DDR4 SDRAM",
    "",
    "",
    "",
    "",
    "",
    "DDR5 SDRAM",
};

// Module types, SPD byte 3. The generations number the 72-bit SO modules differently.
constexpr std::array<std::string_view, 12> kDdr3ModuleTypes{
    "Undefined",  "RDIMM",      "UDIMM",        "SO-DIMM",      "Micro-DIMM",   "Mini-RDIMM",
    "Mini-UDIMM", "Mini-CDIMM", "72b-SO-UDIMM", "72b-SO-RDIMM", "72b-SO-CDIMM", "LRDIMM",
};
constexpr std::array<std::string_view, 16> kDdr4ModuleTypes{
    "Undefined",   "RDIMM",       "UDIMM",        "SO-DIMM",      "LRDIMM",   "Mini-RDIMM",
    "Mini-UDIMM",  "Reserved",    "72b-SO-RDIMM", "72b-SO-UDIMM", "Reserved", "Reserved",
    "16b-SO-DIMM", "32b-SO-DIMM", "Reserved",     "Reserved",
};
constexpr std::array<std::string_view, 16> kDdr5ModuleTypes{
    "Undefined", "RDIMM",    "UDIMM",     "SO-DIMM",   "LRDIMM", "Undefined",
    "Undefined", "MRDIMM",   "Undefined", "Undefined", "DDIMM",  "Solder down",
    "Reserved",  "Reserved", "Reserved",  "Reserved",
};

std::string name_at(std::span<const std::string_view> names, unsigned int code) {
  const bool listed = code < names.size() && !names[code].empty();
  return std::string(listed ? names[code] : "Unknown");
}

double volts_of(unsigned int millivolts) {
  return millivolts / 1000.0;
}

constexpr unsigned int code_of(unsigned char module, unsigned int selector) {
  constexpr unsigned int kSpd = 0x00A00000;
  return kSpd + ((static_cast<unsigned int>(module) << 8) & 0xF00U) + selector;
}

}  // namespace

Status SdRamFunc::read(unsigned char module, unsigned int selector, unsigned int* word) const {
  return raw_text::read_word(get_func_, code_of(module, selector), word);
}

template <typename ToText>
Status SdRamFunc::read_text(unsigned char module, unsigned int selector, std::string& out,
                            const ToText& to_text) const {
  return raw_text::read_text(get_func_, code_of(module, selector), out, to_text);
}

bool SdRamFunc::IsAvailable() const {
  return GetRamSocketCount() != 0;
}

Status SdRamFunc::getDRAMQTY(unsigned int* count) const {
  *count = 0;
  const Status status = read(0, kModuleCount, count);
  if (status != IOT_STATUS_SUCCESS) {
    *count = 0;  // whatever a failing read may have stored
  }
  return status;
}

unsigned int SdRamFunc::GetRamSocketCount() const {
  unsigned int count = 0;
  getDRAMQTY(&count);
  return count;
}

Status SdRamFunc::GetRamIndexInfo(const unsigned int& module, const unsigned int& info_id,
                                  std::string& out) const {
  return getAllTypeDataString(static_cast<unsigned char>(module), info_id, out);
}

Status SdRamFunc::getAllTypeDataString(const unsigned char& module, const unsigned int& info_id,
                                       std::string& out) const {
  struct Field {
    unsigned int info_id;
    Status (SdRamFunc::*getter)(const unsigned char&, std::string&) const;
  };
  static constexpr std::array kFields{
      Field{sdram::kMemoryType, &SdRamFunc::getMemoryType},
      Field{sdram::kModuleType, &SdRamFunc::getModuleType},
      Field{sdram::kModuleSize, &SdRamFunc::getModuleSize},
      Field{sdram::kMemorySpeed, &SdRamFunc::getMemorySpeed},
      Field{sdram::kRank, &SdRamFunc::getRank},
      Field{sdram::kVoltage, &SdRamFunc::getVoltage},
      Field{sdram::kBank, &SdRamFunc::getBank},
      Field{sdram::kWeekYear, &SdRamFunc::getWeekYear},
      Field{sdram::kTemperature, &SdRamFunc::getTemperature},
      Field{sdram::kWriteProtection, &SdRamFunc::getWriteProtection},
      Field{sdram::kModuleManufacturer, &SdRamFunc::getModuleManufacture},
      Field{sdram::kDramManufacturer, &SdRamFunc::getDRAMManufacture},
      Field{sdram::kPartNumber, &SdRamFunc::part_number},
      Field{sdram::kSpecificData, &SdRamFunc::getSpecificData},
  };
  out = kNotAvailable;
  const auto* const field = std::ranges::find(kFields, info_id, &Field::info_id);
  return field == kFields.end() ? IOT_STATUS_UNDEFINED_ITEM : (this->*field->getter)(module, out);
}

Status SdRamFunc::getPartNumber(const unsigned char& module, std::string& out,
                                bool& own_module) const {
  unsigned int word = 0;
  const Status status = read(module, kPartNumberFirst, &word);
  if (status == IOT_STATUS_SUCCESS) {
    own_module = word == kOwnSeries;
    out = characters(module, word, kPartNumberFirst, kPartNumberLast);
  }
  return status;
}

// The text of the selectors first..last, of which the first has been read.
std::string SdRamFunc::characters(unsigned char module, unsigned int first_word, unsigned int first,
                                  unsigned int last) const {
  std::string text;
  text.reserve((last - first + 1) * sizeof first_word);
  raw_text::append_characters(first_word, text);
  raw_text::append_words(get_func_, code_of(module, first + 1), code_of(module, last), first_word,
                         text);
  return text;
}

Status SdRamFunc::part_number(const unsigned char& module, std::string& out) const {
  bool own_module = false;
  return getPartNumber(module, out, own_module);
}

// IOT_STATUS_SUCCESS for a module of the series that carries vendor-specific data.
Status SdRamFunc::check_own_series(unsigned char module) const {
  unsigned int word = 0;
  const Status status = read(module, kPartNumberFirst, &word);
  return status == IOT_STATUS_SUCCESS && word != kOwnSeries ? IOT_STATUS_UNSUPPORTED : status;
}

Status SdRamFunc::getSpecificData(const unsigned char& module, std::string& out) const {
  if (const Status status = check_own_series(module); status != IOT_STATUS_SUCCESS) {
    return status;
  }
  unsigned int word = 0;
  const Status status = read(module, kSpecificDataFirst, &word);
  out = status == IOT_STATUS_SUCCESS
            ? characters(module, word, kSpecificDataFirst, kSpecificDataLast)
            : kNotAvailable;
  return status;
}

Status SdRamFunc::getWriteProtection(const unsigned char& module, std::string& out) const {
  if (const Status status = check_own_series(module); status != IOT_STATUS_SUCCESS) {
    return status;
  }
  out = kNotAvailable;
  return read_text(module, kProtectionWord, out, [](unsigned int word) {
    const unsigned int state = word & 0xFFFFU;
    return state == 0 ? "Disable" : state == kProtected ? "Enable" : kNotAvailable;
  });
}

Status SdRamFunc::getWeekYear(const unsigned char& module, std::string& out) const {
  return read_text(module, kDateWord, out, [](unsigned int word) {
    std::array<char, 32> text{};
    // Hexadecimal digits print BCD. What stands above the date word shows in the first number.
    std::snprintf(text.data(), text.size(), "%02x-%02x", word >> 8, word & 0xFFU);
    return std::string(text.data());
  });
}

Status SdRamFunc::getMemoryType(const unsigned char& module, std::string& out) const {
  return read_text(module, kDramType, out, [](unsigned int word) {
    return getMemoryType(static_cast<unsigned char>(word));
  });
}

Status SdRamFunc::getModuleType(const unsigned char& module, std::string& out) const {
  unsigned int dram_type = 0;
  if (const Status status = read(module, kDramType, &dram_type); status != IOT_STATUS_SUCCESS) {
    return status;
  }
  unsigned int word = 0;
  const Status status = read(module, kModuleTypeCode, &word);
  const auto code = static_cast<unsigned char>(status == IOT_STATUS_SUCCESS ? word : 0);
  // Compared as the whole word, where the memory type's own text takes the low byte.
  if (dram_type == kDdr3) {
    out = getDDR3ModuleType(code);
  } else if (dram_type == kDdr4) {
    out = getDDR4ModuleType(code);
  } else if (dram_type == kDdr5) {
    out = status == IOT_STATUS_READ_FAILED ? kNotAvailable : getDDR5ModuleType(code);
  }
  return status;
}

Status SdRamFunc::getModuleSize(const unsigned char& module, std::string& out) const {
  return read_text(module, kSizeGigabytes, out, To_String<unsigned int>);
}

Status SdRamFunc::getMemorySpeed(const unsigned char& module, std::string& out) const {
  return read_text(module, kDataRate, out, To_String<unsigned int>);
}

Status SdRamFunc::getRank(const unsigned char& module, std::string& out) const {
  return read_text(module, kRankCount, out, To_String<unsigned int>);
}

Status SdRamFunc::getBank(const unsigned char& module, std::string& out) const {
  return read_text(module, kBankCount, out, To_String<unsigned int>);
}

Status SdRamFunc::getVoltage(const unsigned char& module, std::string& out) const {
  return read_text(module, kMillivolts, out,
                   [](unsigned int word) { return To_String(volts_of(word)); });
}

Status SdRamFunc::getVoltage(const unsigned char& module, double& volts) const {
  unsigned int millivolts = 0;
  const Status status = read(module, kMillivolts, &millivolts);
  volts = status == IOT_STATUS_SUCCESS ? volts_of(millivolts) : 0.0;
  return status;
}

Status SdRamFunc::getTemperature(const unsigned char& module, std::string& out) const {
  return read_text(module, kCentikelvin, out,
                   [](unsigned int word) { return To_String(word / 100.0 - 273.15); });
}

Status SdRamFunc::getModuleManufacture(const unsigned char& module, std::string& out) const {
  return read_text(module, kModuleMaker, out, jep106::manufacturer);
}

Status SdRamFunc::getDRAMManufacture(const unsigned char& module, std::string& out) const {
  return read_text(module, kDramMaker, out, jep106::manufacturer);
}

std::string SdRamFunc::getMemoryType(unsigned char key) {
  return name_at(kMemoryTypes, key);
}

std::string SdRamFunc::getDDR3ModuleType(unsigned char code) {
  return name_at(kDdr3ModuleTypes, code);
}

std::string SdRamFunc::getDDR4ModuleType(unsigned char code) {
  return name_at(kDdr4ModuleTypes, code);
}

std::string SdRamFunc::getDDR5ModuleType(unsigned char code) {
  return name_at(kDdr5ModuleTypes, code);
}

std::string SdRamFunc::getManufacture(unsigned int id_word) {
  return std::string(jep106::manufacturer(id_word));
}
