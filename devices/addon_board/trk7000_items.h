// The add-on board: the IDs that its catalogue and its adapter share, and its sheet.
#pragma once

#include "framework/item_id.h"
#include "framework/row.h"

namespace trk7000 {

inline constexpr unsigned int kPresence = 0x14170001;

inline constexpr unsigned int kTemperatures = 0x14170100;
inline constexpr unsigned int kFirstVtin = 0x14170111;
inline constexpr unsigned int kVtinEnd = 0x14170114;
inline constexpr unsigned int kFirstBt = 0x14170121;
inline constexpr unsigned int kBtEnd = 0x14170125;

inline constexpr unsigned int kFanSpeeds = 0x14170300;
inline constexpr unsigned int kOnboardFans = 0x14170310;
inline constexpr unsigned int kFirstFan = 0x14170311;
inline constexpr unsigned int kFanEnd = 0x14170318;

inline constexpr unsigned int kInformation = 0x14170600;
inline constexpr unsigned int kFirmwareVersion = 0x14170601;
inline constexpr unsigned int kEcType = 0x14170602;
inline constexpr unsigned int kKernelVersion = 0x14170603;

const catalogue::Sheet& sheet();

}  // namespace trk7000
