// Looking codes up in the families' rows.
#include "tests/support/rows.h"

#include <sstream>

#include "module/families.h"

namespace {

// Codes of an instance are those of the first and so many steps; the number is the instance's.
bool has_code(const catalogue::Sheet& sheet, const catalogue::Row& row, std::uint32_t code) {
  const unsigned int count = row.code && sheet.instances ? sheet.instances->max : 1;
  const unsigned int step = sheet.instances ? sheet.instances->code_step : 0;
  for (unsigned int n = 0; row.code && n < count; ++n) {
    const std::uint32_t first = *row.code + n * step;
    if (code >= first && code - first < row.words) {
      return true;
    }
  }
  return false;
}

}  // namespace

std::string owner_of(std::uint32_t code) {
  std::ostringstream text;
  text << std::hex << std::uppercase;
  for (const catalogue::Sheet* sheet : families::sheets()) {
    if (sheet->presence_code == code) {
      return std::string(sheet->name) + "'s presence";
    }
    for (const catalogue::Row& row : sheet->rows) {
      if (has_code(*sheet, row, code)) {
        text << sheet->name << " item 0x" << row.id << " \"" << row.name << '"';
        return text.str();
      }
    }
  }
  return "no item's code";
}

std::set<std::uint32_t> presence_codes() {
  std::set<std::uint32_t> codes;
  for (const catalogue::Sheet* sheet : families::sheets()) {
    codes.insert(sheet->presence_code);
    if (sheet->instances) {
      for (const catalogue::Count& count : sheet->instances->counted_by) {
        codes.insert(count.code);
      }
    }
  }
  return codes;
}
