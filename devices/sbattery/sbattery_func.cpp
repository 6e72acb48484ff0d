// Decoding of the battery's registers.
#include "devices/sbattery/sbattery_func.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>

#include "devices/sbattery/sbattery_items.h"
#include "framework/raw_text.h"
#include "framework/text_item.h"
#include "framework/text_number.h"

namespace {

// Smart Battery Data commands, except the presence probe, the manufacturer name (four characters
// a read, where the standard has one block) and the gauge's own state of health.
enum Command : unsigned int {
  kPresence = 0x00,
  kTemperature = 0x08,
  kVoltage = 0x09,
  kCurrent = 0x0A,
  kRelativeStateOfCharge = 0x0D,
  kAbsoluteStateOfCharge = 0x0E,
  kRemainingCapacity = 0x0F,
  kFullChargeCapacity = 0x10,
  kAverageTimeToEmpty = 0x12,
  kAverageTimeToFull = 0x13,
  kBatteryStatus = 0x16,
  kCycleCount = 0x17,
  kDesignCapacity = 0x18,
  kDesignVoltage = 0x19,
  kManufactureDate = 0x1B,
  kSerialNumber = 0x1C,
  kManufacturerNameFirst = 0x24,
  kManufacturerNameLast = 0x28,
  kStateOfHealth = 0x4F,
};

constexpr unsigned int kDischarging = 0x0040;       // of BatteryStatus
constexpr unsigned int kErrorCode = 0x000F;         // of BatteryStatus
constexpr unsigned int kTimeNotApplicable = 65535;  // of the average times

constexpr std::size_t kNameLength = 20;

constexpr unsigned int code_of(unsigned int command) {
  constexpr unsigned int kSmartBattery = 0x00B00000;
  return kSmartBattery + command;
}

template <typename... Numbers>
std::string formatted(const char* format, Numbers... numbers) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), format, numbers...);
  return text.data();
}

}  // namespace

template <typename ToText>
Status SBatteryFunc::read_text(unsigned int command, std::string& out,
                               const ToText& to_text) const {
  return raw_text::read_text(get_func_, code_of(command), out, to_text);
}

bool SBatteryFunc::IsAvailable() const {
  unsigned int ignored = 0;
  return raw_text::read_word(get_func_, code_of(kPresence), &ignored) == IOT_STATUS_SUCCESS;
}

Status SBatteryFunc::GetBatteryInfo(const unsigned int& id, std::string& out) const {
  struct Field {
    unsigned int id;
    Status (SBatteryFunc::*getter)(std::string&) const;
  };
  static constexpr std::array kFields{
      Field{sbattery::kBatteryStatus, &SBatteryFunc::getBatteryStatus},
      Field{sbattery::kManufacturerName, &SBatteryFunc::getManufacturerName},
      Field{sbattery::kManufacturerDate, &SBatteryFunc::getManufacturerDate},
      Field{sbattery::kSerialNumber, &SBatteryFunc::getSerialNumber},
      Field{sbattery::kDesignVoltage, &SBatteryFunc::getDesignVoltage},
      Field{sbattery::kDesignCapacity, &SBatteryFunc::getDesignCapacity},
      Field{sbattery::kVoltage, &SBatteryFunc::getVoltage},
      Field{sbattery::kCurrent, &SBatteryFunc::getCurrent},
      Field{sbattery::kRelativeStateOfCharge, &SBatteryFunc::getRelativeStateOfCharge},
      Field{sbattery::kAbsoluteStateOfCharge, &SBatteryFunc::getAbsoluteStateOfCharge},
      Field{sbattery::kStateOfHealth, &SBatteryFunc::getSoH},
      Field{sbattery::kFullChargeCapacity, &SBatteryFunc::getFullChargeCapacity},
      Field{sbattery::kRemainingCapacity, &SBatteryFunc::getRemainingCapacity},
      Field{sbattery::kAverageTimeToEmpty, &SBatteryFunc::getAverageTimeToEmpty},
      Field{sbattery::kAverageTimeToFull, &SBatteryFunc::getAverageTimeToFull},
      Field{sbattery::kCycleCount, &SBatteryFunc::getCycleCount},
      Field{sbattery::kTemperature, &SBatteryFunc::getTemperature},
      Field{sbattery::kErrorCodes, &SBatteryFunc::getErrorCodes},
  };
  out.clear();
  const auto* const field = std::ranges::find(kFields, id, &Field::id);
  const Status status = field == kFields.end() ? IOT_STATUS_SUCCESS : (this->*field->getter)(out);
  if (out.empty()) {
    out = text_item::kNotAvailable;
  }
  return status;
}

Status SBatteryFunc::getBatteryStatus(std::string& out) const {
  unsigned int current = 0;
  if (const Status status = raw_text::read_word(get_func_, code_of(kCurrent), &current);
      status != IOT_STATUS_SUCCESS) {
    return status;
  }
  if ((current & 0xFFFFU) == 0) {
    out = "AC Power";  // nothing flows: the machine runs on external power
    return IOT_STATUS_SUCCESS;
  }
  return read_text(kBatteryStatus, out, [](unsigned int word) {
    return (word & kDischarging) != 0 ? "Discharging" : "Charging";
  });
}

Status SBatteryFunc::getManufacturerName(std::string& out) const {
  out.reserve(out.size() + kNameLength);
  return raw_text::append_words(get_func_, code_of(kManufacturerNameFirst),
                                code_of(kManufacturerNameLast), 0, out);
}

Status SBatteryFunc::getManufacturerDate(std::string& out) const {
  return read_text(kManufactureDate, out, [](unsigned int word) {
    return formatted("%u/%u/%u", (word >> 9) + 1980U, (word >> 5) & 0xFU, word & 0x1FU);
  });
}

Status SBatteryFunc::getSerialNumber(std::string& out) const {
  return read_text(kSerialNumber, out, [](unsigned int word) { return formatted("0x%04X", word); });
}

Status SBatteryFunc::getDesignVoltage(std::string& out) const {
  return read_text(kDesignVoltage, out, To_String<unsigned int>);
}

Status SBatteryFunc::getDesignCapacity(std::string& out) const {
  return read_text(kDesignCapacity, out, To_String<unsigned int>);
}

Status SBatteryFunc::getVoltage(std::string& out) const {
  return read_text(kVoltage, out, To_String<unsigned int>);
}

Status SBatteryFunc::getCurrent(std::string& out) const {
  return read_text(kCurrent, out, [](unsigned int word) {
    return To_String(static_cast<std::int16_t>(static_cast<std::uint16_t>(word)));
  });
}

Status SBatteryFunc::getRelativeStateOfCharge(std::string& out) const {
  return read_text(kRelativeStateOfCharge, out, To_String<unsigned int>);
}

Status SBatteryFunc::getAbsoluteStateOfCharge(std::string& out) const {
  return read_text(kAbsoluteStateOfCharge, out, To_String<unsigned int>);
}

Status SBatteryFunc::getSoH(std::string& out) const {
  return read_text(kStateOfHealth, out, To_String<unsigned int>);
}

Status SBatteryFunc::getFullChargeCapacity(std::string& out) const {
  return read_text(kFullChargeCapacity, out, To_String<unsigned int>);
}

Status SBatteryFunc::getRemainingCapacity(std::string& out) const {
  return read_text(kRemainingCapacity, out, To_String<unsigned int>);
}

Status SBatteryFunc::average_time(unsigned int command, std::string& out) const {
  unsigned int current = 0;
  const Status current_status = raw_text::read_word(get_func_, code_of(kCurrent), &current);
  // An unreadable current does not tell that the battery is idle.
  if (current_status == IOT_STATUS_SUCCESS && current == 0) {
    return IOT_STATUS_NOT_FOUND;
  }
  unsigned int minutes = 0;
  const Status status = raw_text::read_word(get_func_, code_of(command), &minutes);
  if (status != IOT_STATUS_SUCCESS) {
    return status;
  }
  if (minutes == kTimeNotApplicable) {
    return IOT_STATUS_NOT_FOUND;
  }
  out = formatted("%u h %u m", minutes / 60U, minutes % 60U);
  return IOT_STATUS_SUCCESS;
}

Status SBatteryFunc::getAverageTimeToEmpty(std::string& out) const {
  return average_time(kAverageTimeToEmpty, out);
}

Status SBatteryFunc::getAverageTimeToFull(std::string& out) const {
  return average_time(kAverageTimeToFull, out);
}

Status SBatteryFunc::getCycleCount(std::string& out) const {
  return read_text(kCycleCount, out, To_String<unsigned int>);
}

Status SBatteryFunc::getTemperature(std::string& out) const {
  return read_text(kTemperature, out,
                   [](unsigned int word) { return To_String(word * 0.1 - 273.15); });
}

Status SBatteryFunc::getErrorCodes(std::string& out) const {
  return read_text(kBatteryStatus, out,
                   [](unsigned int word) { return formatted("0x%x", word & kErrorCode); });
}
