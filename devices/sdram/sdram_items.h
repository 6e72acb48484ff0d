// Info IDs of the memory modules' fields, and their sheet.
#pragma once

#include <string_view>

#include "framework/text_item.h"

namespace sdram {

inline constexpr unsigned int kFamily = 0x14180000;

inline constexpr unsigned int kMemoryType = 0x14180100;
inline constexpr unsigned int kModuleType = 0x14180200;
inline constexpr unsigned int kModuleSize = 0x14180300;
inline constexpr unsigned int kMemorySpeed = 0x14180400;
inline constexpr unsigned int kRank = 0x14180500;
inline constexpr unsigned int kVoltage = 0x14180600;
inline constexpr unsigned int kBank = 0x14180700;
inline constexpr unsigned int kWeekYear = 0x14180800;
inline constexpr unsigned int kTemperature = 0x14180900;
inline constexpr unsigned int kWriteProtection = 0x14180A00;
inline constexpr unsigned int kModuleManufacturer = 0x14180B00;
inline constexpr unsigned int kDramManufacturer = 0x14180C00;
inline constexpr unsigned int kPartNumber = 0x14181100;
inline constexpr unsigned int kSpecificData = 0x14182100;

/// How a part number starts whose module carries vendor-specific data.
inline constexpr std::string_view kOwnSeries = "VLX-";

extern const catalogue::Sheet kSheet;

extern const text_item::Family kItems;

}  // namespace sdram
