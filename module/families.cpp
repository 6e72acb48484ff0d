// The list of families.
#include "module/families.h"

#include "devices/addon_board/trk7000_items.h"
#include "devices/gsensor/gsensor_items.h"
#include "devices/pic/pic_items.h"
#include "devices/poe/poe_items.h"
#include "devices/sbattery/sbattery_items.h"
#include "devices/sdram/sdram_items.h"

std::array<const catalogue::Sheet*, 6> family_sheets() {
  return {&sdram::sheet(), &sbattery::sheet(), &trk7000::sheet(),
          &poe::sheet(),   &pic::sheet(),      &gsensor::sheet()};
}
