// What the codes of SPD fields stand for, and the decoder's entries.
#include "devices/sdram/sdram_func.h"

#include <array>
#include <span>
#include <string_view>

#include "devices/sdram/jep106.h"

namespace {

// DRAM device types, SPD byte 2. 13 to 17 are reserved or low-power types, which have no name here.
constexpr std::array<std::string_view, 19> kMemoryTypes{
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

}  // namespace

bool SdRamFunc::IsAvailable() const {
  return GetRamSocketCount() != 0;
}

Status SdRamFunc::getDRAMQTY(unsigned int* count) const {
  *count = 0;
  const Status status = device(0).read(sdram::kSheet.presence_code, count);
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
  return text_item::read_text(sdram::kItems, device(module), info_id, out);
}

Status SdRamFunc::getPartNumber(const unsigned char& module, std::string& out,
                                bool& own_module) const {
  const Status status = decode(module, sdram::kPartNumber, out);
  if (status == IOT_STATUS_SUCCESS) {
    own_module = out.starts_with(sdram::kOwnSeries);
  }
  return status;
}

Status SdRamFunc::getVoltage(const unsigned char& module, double& volts) const {
  volts = 0;
  return text_item::read_real(sdram::kItems, device(module), sdram::kVoltage, &volts);
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
