// The add-on board: the IDs that its catalogue and its adapter share, and its rows.
#pragma once

#include "framework/row_table.h"

namespace trk7000 {

inline constexpr unsigned int kFamily = 0x14170000;
inline constexpr unsigned int kPresence = 0x14170001;
inline constexpr unsigned int kTemperatures = 0x14170100;
inline constexpr unsigned int kFanSpeeds = 0x14170300;
inline constexpr unsigned int kOnboardFans = 0x14170310;
inline constexpr unsigned int kInformation = 0x14170600;

extern const catalogue::RowTable kTable;
extern const catalogue::Sheet kSheet;

// The groups that are read in one go.
extern const catalogue::Ids kVtin;
extern const catalogue::Ids kBt;
extern const catalogue::Ids kFans;

}  // namespace trk7000
