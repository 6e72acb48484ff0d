// What people and HTTP clients may call items. The first line is a pattern, the second the name of
// an item, the third its package.
#include <vector>

#include "tests/fuzz/fuzz_device.h"
#include "tools/host/model/name_pattern.h"
#include "tools/host/model/selection.h"
#include "tools/host/system/errors.h"
#include "tools/host/system/typed_number.h"

namespace {

std::string_view take_line(std::string_view& text) {
  const std::string_view line = text.substr(0, text.find('\n'));
  text.remove_prefix(std::min(line.size() + 1, text.size()));
  return line;
}

size_t next_character(std::string_view text, size_t at) {
  do {
    at += 1;
  } while (at < text.size() && (static_cast<unsigned char>(text[at]) & 0xC0U) == 0x80U);
  return at;
}

// The same by a table of which rest of the pattern matches which rest of the text: plainly right,
// and slow.
bool matches_by_table(std::string_view pattern, std::string_view text) {
  std::vector<std::vector<bool>> table(pattern.size() + 1, std::vector<bool>(text.size() + 1));
  table[pattern.size()][text.size()] = true;
  for (size_t i = pattern.size(); i-- > 0;) {
    for (size_t j = text.size() + 1; j-- > 0;) {
      if (pattern[i] == '*') {
        table[i][j] = table[i + 1][j] || (j < text.size() && table[i][j + 1]);
      } else if (j < text.size()) {
        table[i][j] = pattern[i] == '?'
                          ? table[i + 1][next_character(text, j)]
                          : table[i + 1][j + 1] &&
                                kova_host::same_word(pattern.substr(i, 1), text.substr(j, 1));
      }
    }
  }
  return table[0][0];
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view text(reinterpret_cast<const char*>(data), size);
  const std::string pattern(take_line(text));
  kova_host::Item item;
  item.id = 0x14160711;
  item.family = "F";
  item.name = take_line(text);
  item.package = take_line(text);
  FUZZ_EXPECT(kova_host::matches_pattern(pattern, item.name) ==
              matches_by_table(pattern, item.name));
  try {
    const std::vector<kova_host::Item> named = kova_host::named_items({item, item}, pattern);
    FUZZ_EXPECT(named.size() == 1 && pattern.size() <= kova_host::kLongestItemText);
  } catch (const kova_host::HostError& error) {
    FUZZ_EXPECT(*error.what() != '\0' && error.fault() == kova_host::Fault::usage);
  }
  return 0;
}
