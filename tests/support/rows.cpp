// Looking codes up in the families' rows.
#include "tests/support/rows.h"

#include <sstream>

#include "module/families.h"

// Codes of a family's instances are those of the first and so many steps.
std::string owner_of(std::uint32_t code) {
  for (const catalogue::Sheet* sheet : families::sheets()) {
    if (sheet->presence_code == code) {
      return std::string(sheet->name) + "'s presence";
    }
    catalogue::Instances once{};
    once.max = 1;
    once.code_step = 0;
    const catalogue::Instances& each = sheet->instances ? *sheet->instances : once;
    for (const catalogue::Row& row : sheet->rows) {
      for (unsigned int n = 0; row.code && n < each.max; ++n) {
        if (code - (*row.code + n * each.code_step) < row.words) {
          std::ostringstream text;
          text << sheet->name << " item 0x" << std::hex << row.id << " \"" << row.name << '"';
          return text.str();
        }
      }
    }
  }
  return "no item's code";
}

std::set<std::uint32_t> presence_codes() {
  std::set<std::uint32_t> codes;
  for (const catalogue::Sheet* sheet : families::sheets()) {
    codes.insert(sheet->presence_code);
    for (const auto& count :
         sheet->instances ? sheet->instances->counted_by : std::span<const catalogue::Count>{}) {
      codes.insert(count.code);
    }
  }
  return codes;
}
