// The accelerometer: the IDs that its catalogue and its adapter share, and its rows.
#pragma once

#include "framework/row_table.h"

namespace gsensor {

inline constexpr unsigned int kFamily = 0x14150000;
inline constexpr unsigned int kPresence = 0x14150001;
inline constexpr unsigned int kSettings = 0x14150700;
inline constexpr unsigned int kData = 0x14150900;

extern const catalogue::RowTable kTable;
extern const catalogue::Sheet kSheet;

// The groups that are read in one go.
extern const catalogue::Ids kModes;
extern const catalogue::Ids kOffsets;
extern const catalogue::Ids kRates;
extern const catalogue::Ids kRanges;
extern const catalogue::Ids kReadings;

}  // namespace gsensor
