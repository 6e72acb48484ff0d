// SdRamFunc: what the device library reports of the memory modules' SPD data, turned into texts.
#pragma once

#include <string>

#include "devices/sdram/sdram_items.h"
#include "framework/device_library.h"
#include "framework/status.h"
#include "framework/text_item.h"

/// The device library delivers each SPD field already extracted, one word a read. A module index
/// counts from 0, and only its low four bits reach the library. All getters return the library's
/// own code when their read fails, and IOT_STATUS_NOT_READY without a read entry; the text is then
/// as it was, where nothing else is said.
class SdRamFunc {
 public:
  explicit SdRamFunc(ReadEntry get_func) : get_func_(get_func) {}

  /// What a module is read through.
  [[nodiscard]] WordReader device(unsigned int module) const {
    return {.get_func = get_func_, .offset = (module & 0xFU) << 8};
  }

  /// True when the library reports a module count other than 0.
  [[nodiscard]] bool IsAvailable() const;

  /// The number of modules; 0 when it cannot be read.
  Status getDRAMQTY(unsigned int* count) const;
  [[nodiscard]] unsigned int GetRamSocketCount() const;

  /// Decodes the field that an info ID names; "N/A" when there is no text. The getter's status, or
  /// IOT_STATUS_UNDEFINED_ITEM for an info ID without a field.
  Status GetRamIndexInfo(const unsigned int& module, const unsigned int& info_id,
                         std::string& out) const;
  Status getAllTypeDataString(const unsigned char& module, const unsigned int& info_id,
                              std::string& out) const;

  /// 20 characters as they stand in SPD, NULs and trailing blanks included. Only the first four
  /// decide the status: the rest of an unreadable number repeats the characters before.
  /// `own_module` tells whether they are "VLX-", the series that carries vendor-specific data.
  Status getPartNumber(const unsigned char& module, std::string& out, bool& own_module) const;

  /// 32 characters of vendor-specific data; "N/A" when they cannot be read.
  /// IOT_STATUS_UNSUPPORTED for a module of another series.
  Status getSpecificData(const unsigned char& module, std::string& out) const {
    return decode(module, sdram::kSpecificData, out);
  }

  /// "Enable" or "Disable"; "N/A" for another state word or when it cannot be read.
  /// IOT_STATUS_UNSUPPORTED for a module of another series.
  Status getWriteProtection(const unsigned char& module, std::string& out) const {
    return decode(module, sdram::kWriteProtection, out);
  }

  /// "23-15": the two BCD bytes of the manufacturing date.
  Status getWeekYear(const unsigned char& module, std::string& out) const {
    return decode(module, sdram::kWeekYear, out);
  }

  Status getMemoryType(const unsigned char& module, std::string& out) const {
    return decode(module, sdram::kMemoryType, out);
  }

  /// The module type of a DDR3, DDR4 or DDR5 module; the text of another stays as it was. A type
  /// code that cannot be read is looked up as 0, and on DDR5 gives "N/A" when the library answers
  /// IOT_STATUS_READ_FAILED.
  Status getModuleType(const unsigned char& module, std::string& out) const {
    return decode(module, sdram::kModuleType, out);
  }

  /// Plain numbers: size in whole gigabytes, speed in MT/s, ranks and banks.
  Status getModuleSize(const unsigned char& module, std::string& out) const {
    return decode(module, sdram::kModuleSize, out);
  }
  Status getMemorySpeed(const unsigned char& module, std::string& out) const {
    return decode(module, sdram::kMemorySpeed, out);
  }
  Status getRank(const unsigned char& module, std::string& out) const {
    return decode(module, sdram::kRank, out);
  }
  Status getBank(const unsigned char& module, std::string& out) const {
    return decode(module, sdram::kBank, out);
  }

  /// Volts; the number is 0 when it cannot be read.
  Status getVoltage(const unsigned char& module, std::string& out) const {
    return decode(module, sdram::kVoltage, out);
  }
  Status getVoltage(const unsigned char& module, double& volts) const;

  /// Degrees Celsius.
  Status getTemperature(const unsigned char& module, std::string& out) const {
    return decode(module, sdram::kTemperature, out);
  }

  /// Manufacturer names by JEP106.
  Status getModuleManufacture(const unsigned char& module, std::string& out) const {
    return decode(module, sdram::kModuleManufacturer, out);
  }
  Status getDRAMManufacture(const unsigned char& module, std::string& out) const {
    return decode(module, sdram::kDramManufacturer, out);
  }

  /// Name tables: the DRAM device type of SPD byte 2, the module type codes (compared whole, so
  /// that a hybrid module is none of them) and JEP106 ID words. "Unknown" when not listed.
  static std::string getMemoryType(unsigned char key);
  static std::string getDDR3ModuleType(unsigned char code);
  static std::string getDDR4ModuleType(unsigned char code);
  static std::string getDDR5ModuleType(unsigned char code);
  static std::string getManufacture(unsigned int id_word);

 private:
  Status decode(unsigned char module, unsigned int info_id, std::string& out) const {
    return text_item::decode(sdram::kItems, device(module), info_id, out);
  }

  ReadEntry get_func_;
};
