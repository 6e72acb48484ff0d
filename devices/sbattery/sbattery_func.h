// SBatteryFunc: the registers of the smart battery, turned into texts. The commands are those of
// the Smart Battery Data Specification, revision 1.1.
#pragma once

#include <string>

#include "framework/device_library.h"
#include "framework/status.h"

/// All getters return the device library's own code when their read fails, and
/// IOT_STATUS_NOT_READY without a read entry; the text is then as it was, where nothing else is
/// said. Units are those of the registers.
class SBatteryFunc {
 public:
  explicit SBatteryFunc(ReadEntry get_func) : get_func_(get_func) {}

  /// True when the presence read succeeds, whatever it reads.
  [[nodiscard]] bool IsAvailable() const;

  /// Decodes the field of an item ID (bits 7..0 clear); "N/A" when there is no text. The getter's
  /// status; an ID without a field is IOT_STATUS_SUCCESS with "N/A".
  Status GetBatteryInfo(const unsigned int& id, std::string& out) const;

  /// "AC Power" while no current flows, else "Discharging" or "Charging".
  Status getBatteryStatus(std::string& out) const;

  /// Appends 20 characters, NULs and trailing blanks included. Only the last read decides the
  /// status; a read that fails without storing repeats the characters before.
  Status getManufacturerName(std::string& out) const;

  Status getManufacturerDate(std::string& out) const;  ///< "2025/1/31"
  Status getSerialNumber(std::string& out) const;      ///< "0x0012"

  Status getDesignVoltage(std::string& out) const;          ///< mV
  Status getDesignCapacity(std::string& out) const;         ///< mAh
  Status getVoltage(std::string& out) const;                ///< mV
  Status getCurrent(std::string& out) const;                ///< mA, negative while discharging
  Status getRelativeStateOfCharge(std::string& out) const;  ///< %
  Status getAbsoluteStateOfCharge(std::string& out) const;  ///< %
  Status getSoH(std::string& out) const;                    ///< %
  Status getFullChargeCapacity(std::string& out) const;     ///< mAh
  Status getRemainingCapacity(std::string& out) const;      ///< mAh

  /// "2 h 5 m". IOT_STATUS_NOT_FOUND while no current flows, and when the battery does not know.
  Status getAverageTimeToEmpty(std::string& out) const;
  Status getAverageTimeToFull(std::string& out) const;

  Status getCycleCount(std::string& out) const;
  Status getTemperature(std::string& out) const;  ///< degrees Celsius
  Status getErrorCodes(std::string& out) const;   ///< "0x7": the error bits of BatteryStatus

 private:
  template <typename ToText>
  Status read_text(unsigned int command, std::string& out, const ToText& to_text) const;
  Status average_time(unsigned int command, std::string& out) const;

  ReadEntry get_func_;
};
