// The power and ignition controller: the IDs that its catalogue and its adapter share, and its
// sheet.
#pragma once

#include "framework/item_id.h"
#include "framework/row.h"

namespace pic {

inline constexpr unsigned int kPresence = 0x14160001;

inline constexpr unsigned int kInformation = 0x14160600;
inline constexpr unsigned int kFirmwareVersion = 0x14160601;
inline constexpr unsigned int kSwitchStatus = 0x14160602;
inline constexpr unsigned int kVehicleOrPcMode = 0x14160603;
inline constexpr unsigned int kBatteryType = 0x14160604;

inline constexpr unsigned int kSettings = 0x14160700;
inline constexpr unsigned int kCurrentView = 0x14160710;
inline constexpr unsigned int kDefaultView = 0x14160720;
inline constexpr unsigned int kWriteView = 0x14160730;
inline constexpr unsigned int kMinimumView = 0x14160740;
inline constexpr unsigned int kMaximumView = 0x14160750;

// Numbers of the settings that are not plain integers.
inline constexpr unsigned int kSettingCount = 11;
inline constexpr unsigned int k12VThreshold = 6;
inline constexpr unsigned int k24VThreshold = 7;
inline constexpr unsigned int kLowVoltageSwitch = 10;
inline constexpr unsigned int kBatteryTypeChoice = 11;

inline constexpr unsigned int kStatus = 0x14160800;
inline constexpr unsigned int kIgnitionStatus = 0x14160801;
inline constexpr unsigned int kPowerInput = 0x14160803;
inline constexpr unsigned int kOutput48V = 0x14160805;
inline constexpr unsigned int kStatusEnd = 0x14160809;

const catalogue::Sheet& sheet();

}  // namespace pic
