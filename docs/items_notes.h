// What docs/items.md says of families and items that the catalogues do not hold.
#pragma once

#include <string_view>

namespace items_document {

extern const std::string_view kIntroduction;
extern const std::string_view kSdram;
extern const std::string_view kSmartBattery;
extern const std::string_view kTrk7000;
extern const std::string_view kPoE;
extern const std::string_view kPic;
extern const std::string_view kGSensor;

/// The note of an item, or "".
std::string_view note_of(unsigned int id);

/// Throws std::runtime_error when a note stands for no item that was asked for.
void check_all_used();

}  // namespace items_document
