// The PoE ports: the IDs of their items, which are a kind plus the port number, and their sheet.
#pragma once

#include "framework/row.h"

namespace poe {

inline constexpr unsigned int kFamily = 0x14140000;
inline constexpr unsigned int kPresence = 0x14140001;
inline constexpr unsigned int kVoltage = 0x14140200;
inline constexpr unsigned int kCurrent = 0x14140400;
inline constexpr unsigned int kDetect = 0x14140800;
inline constexpr unsigned int kClass = 0x14140900;
inline constexpr unsigned int kPortProbe = 0x14140A00;
inline constexpr unsigned int kPower = 0x14140B00;

extern const catalogue::Sheet kSheet;

}  // namespace poe
