// IDs of the PoE ports' items; a port item's ID is its kind plus the port number.
#pragma once

namespace poe {

inline constexpr unsigned int kPresence = 0x14140001;

inline constexpr unsigned int kVoltage = 0x14140200;
inline constexpr unsigned int kCurrent = 0x14140400;
inline constexpr unsigned int kDetect = 0x14140800;
inline constexpr unsigned int kClass = 0x14140900;
inline constexpr unsigned int kPortProbe = 0x14140A00;
inline constexpr unsigned int kPower = 0x14140B00;

}  // namespace poe
