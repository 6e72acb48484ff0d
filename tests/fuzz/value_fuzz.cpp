// What people may type for kovactl to send. The first line is the item's option list, its first
// character the kind of its values; the rest is the text.
#include <cmath>

#include "tests/fuzz/fuzz_device.h"
#include "tools/kovactl/errors.h"
#include "tools/kovactl/set_value.h"

namespace {

kovactl::Item item_from(std::string_view line) {
  kovactl::Item item;
  item.id = 0x14160711;
  if (!line.empty()) {
    item.kind = static_cast<kovactl::ValueKind>(static_cast<unsigned char>(line.front()) % 4);
    item.options = kovactl::parse_options(line.substr(1));
  }
  return item;
}

void check(const kovactl::Item& item, std::string_view text) {
  try {
    const kovactl::Number number = kovactl::value_to_set(item, text);
    const kovactl::JsonPtr json = kovactl::to_json(number);
    FUZZ_EXPECT(json_is_number(json.get()) && std::isfinite(json_number_value(json.get())));
    if (kovactl::parse_number(text) && json_is_integer(json.get())) {
      FUZZ_EXPECT(json_integer_value(json.get()) >= INT32_MIN);
      FUZZ_EXPECT(json_integer_value(json.get()) <= static_cast<json_int_t>(UINT32_MAX));
    }
  } catch (const kovactl::CommandError& error) {
    FUZZ_EXPECT(*error.what() != '\0');
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view text(reinterpret_cast<const char*>(data), size);
  const std::string_view first = text.substr(0, text.find('\n'));
  text.remove_prefix(std::min(first.size() + 1, text.size()));
  const kovactl::Item item = item_from(first);
  check(item, text);
  if (const auto id = kovactl::parse_item_id(text)) {
    FUZZ_EXPECT(kovactl::parse_item_id(kovactl::id_text(*id)) == id);
  }
  for (const kovactl::Option& option : item.options) {
    FUZZ_EXPECT(kovactl::same_word(option.label, option.label));
    check(item, option.label);
  }
  return 0;
}
