// SBatteryFunc: the registers of the smart battery, turned into texts.
#pragma once

#include <string>

#include "devices/sbattery/sbattery_items.h"
#include "framework/device_library.h"
#include "framework/status.h"
#include "framework/text_item.h"

/// All getters return the device library's own code when their read fails, and
/// IOT_STATUS_NOT_READY without a read entry; the text is then as it was, where nothing else is
/// said. Units are those of the registers.
class SBatteryFunc {
 public:
  explicit SBatteryFunc(ReadEntry get_func) : get_func_(get_func) {}

  /// What the battery is read through.
  [[nodiscard]] WordReader device() const { return {.get_func = get_func_}; }

  /// True when the presence read succeeds, whatever it reads.
  [[nodiscard]] bool IsAvailable() const {
    unsigned int ignored = 0;
    return device().read(sbattery::kSheet.presence_code, &ignored) == IOT_STATUS_SUCCESS;
  }

  /// Decodes the field of an item ID (bits 7..0 clear); "N/A" when there is no text. The getter's
  /// status; an ID without a field is IOT_STATUS_SUCCESS with "N/A".
  Status GetBatteryInfo(const unsigned int& id, std::string& out) const {
    return text_item::read_text(sbattery::kItems, device(), id, out);
  }

  /// "AC Power" while no current flows, else "Discharging" or "Charging".
  Status getBatteryStatus(std::string& out) const { return decode(sbattery::kBatteryStatus, out); }

  /// Appends 20 characters, NULs and trailing blanks included. Only the last read decides the
  /// status; a read that fails without storing repeats the characters before.
  Status getManufacturerName(std::string& out) const {
    return decode(sbattery::kManufacturerName, out);
  }

  /// "2025/1/31"
  Status getManufacturerDate(std::string& out) const {
    return decode(sbattery::kManufacturerDate, out);
  }

  /// "0x0012"
  Status getSerialNumber(std::string& out) const { return decode(sbattery::kSerialNumber, out); }

  /// Voltages in mV; the current in mA, negative while discharging.
  Status getDesignVoltage(std::string& out) const { return decode(sbattery::kDesignVoltage, out); }
  Status getVoltage(std::string& out) const { return decode(sbattery::kVoltage, out); }
  Status getCurrent(std::string& out) const { return decode(sbattery::kCurrent, out); }

  /// Capacities in mAh.
  Status getDesignCapacity(std::string& out) const {
    return decode(sbattery::kDesignCapacity, out);
  }
  Status getFullChargeCapacity(std::string& out) const {
    return decode(sbattery::kFullChargeCapacity, out);
  }
  Status getRemainingCapacity(std::string& out) const {
    return decode(sbattery::kRemainingCapacity, out);
  }

  /// Charge and health in %.
  Status getRelativeStateOfCharge(std::string& out) const {
    return decode(sbattery::kRelativeStateOfCharge, out);
  }
  Status getAbsoluteStateOfCharge(std::string& out) const {
    return decode(sbattery::kAbsoluteStateOfCharge, out);
  }
  Status getSoH(std::string& out) const { return decode(sbattery::kStateOfHealth, out); }

  /// "2 h 5 m". IOT_STATUS_NOT_FOUND while no current flows, and when the battery does not know.
  Status getAverageTimeToEmpty(std::string& out) const {
    return decode(sbattery::kAverageTimeToEmpty, out);
  }
  Status getAverageTimeToFull(std::string& out) const {
    return decode(sbattery::kAverageTimeToFull, out);
  }

  /// Cycles.
  Status getCycleCount(std::string& out) const { return decode(sbattery::kCycleCount, out); }

  /// Degrees Celsius.
  Status getTemperature(std::string& out) const { return decode(sbattery::kTemperature, out); }

  /// "0x7": the error bits of BatteryStatus.
  Status getErrorCodes(std::string& out) const { return decode(sbattery::kErrorCodes, out); }

 private:
  Status decode(unsigned int id, std::string& out) const {
    return text_item::decode(sbattery::kItems, device(), id, out);
  }

  ReadEntry get_func_;
};
