// The accelerometer: the IDs that its catalogue and its adapter share, and its sheet.
#pragma once

#include "framework/item_id.h"
#include "framework/row.h"

namespace gsensor {

inline constexpr unsigned int kPresence = 0x14150001;

inline constexpr unsigned int kSettings = 0x14150700;
inline constexpr unsigned int kFirstMode = 0x14150711;
inline constexpr unsigned int kModeEnd = 0x14150714;
inline constexpr unsigned int kFirstOffset = 0x14150721;
inline constexpr unsigned int kOffsetEnd = 0x14150724;
inline constexpr unsigned int kNormalRate = 0x14150731;
inline constexpr unsigned int kSleepRate = 0x14150732;
inline constexpr unsigned int kRange = 0x14150741;

inline constexpr unsigned int kData = 0x14150900;
inline constexpr unsigned int kFirstReading = 0x14150901;
inline constexpr unsigned int kReadingEnd = 0x14150904;

const catalogue::Sheet& sheet();

}  // namespace gsensor
