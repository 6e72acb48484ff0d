// The power and ignition controller: the IDs that its catalogue and its adapter share, and its
// rows.
#pragma once

#include "framework/row_table.h"

namespace pic {

inline constexpr unsigned int kFamily = 0x14160000;
inline constexpr unsigned int kPresence = 0x14160001;
inline constexpr unsigned int kInformation = 0x14160600;
inline constexpr unsigned int kSettings = 0x14160700;
inline constexpr unsigned int kStatus = 0x14160800;

// The views of the settings: a view's ID plus n is setting n.
inline constexpr unsigned int kCurrentView = 0x14160710;
inline constexpr unsigned int kDefaultView = 0x14160720;
inline constexpr unsigned int kWriteView = 0x14160730;
inline constexpr unsigned int kMinimumView = 0x14160740;
inline constexpr unsigned int kMaximumView = 0x14160750;

/// True of a row whose raw word is in tenths of a volt.
constexpr bool is_in_tenths_of_a_volt(const catalogue::Row& row) {
  return row.as.kind == catalogue::Kind::kReal && row.unit == "V" && step_of(row.as) == 0.1 &&
         row.as.offset == 0;
}

extern const catalogue::RowTable kTable;
extern const catalogue::Sheet kSheet;

// The groups that are read in one go.
extern const catalogue::Ids kCurrentValues;
extern const catalogue::Ids kDefaults;
extern const catalogue::Ids kStatusItems;

}  // namespace pic
