// Item IDs of the battery's fields, and its sheet.
#pragma once

#include "framework/text_item.h"

namespace sbattery {

inline constexpr unsigned int kFamily = 0x14190000;

inline constexpr unsigned int kBatteryStatus = 0x14190100;
inline constexpr unsigned int kManufacturerName = 0x14190200;
inline constexpr unsigned int kManufacturerDate = 0x14190300;
inline constexpr unsigned int kSerialNumber = 0x14190400;
inline constexpr unsigned int kDesignVoltage = 0x14190500;
inline constexpr unsigned int kDesignCapacity = 0x14190600;
inline constexpr unsigned int kVoltage = 0x14190700;
inline constexpr unsigned int kCurrent = 0x14190800;
inline constexpr unsigned int kRelativeStateOfCharge = 0x14190900;
inline constexpr unsigned int kAbsoluteStateOfCharge = 0x14190A00;
inline constexpr unsigned int kStateOfHealth = 0x14190B00;
inline constexpr unsigned int kFullChargeCapacity = 0x14190C00;
inline constexpr unsigned int kRemainingCapacity = 0x14190D00;
inline constexpr unsigned int kAverageTimeToEmpty = 0x14190E00;
inline constexpr unsigned int kAverageTimeToFull = 0x14190F00;
inline constexpr unsigned int kCycleCount = 0x14191000;
inline constexpr unsigned int kTemperature = 0x14191100;
inline constexpr unsigned int kErrorCodes = 0x14191200;

extern const catalogue::Sheet kSheet;

extern const text_item::Family kItems;

}  // namespace sbattery
