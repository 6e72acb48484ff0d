// What people may type for kovactl to send. The first line is the item's option list, its first
// character the kind of its values; the rest is the text.
#include <cmath>

#include "tests/fuzz/fuzz_device.h"
#include "tools/host/system/errors.h"
#include "tools/host/values/typed_value.h"

namespace {

kova_host::Item item_from(std::string_view line) {
  kova_host::Item item;
  item.id = 0x14160711;
  if (!line.empty()) {
    item.kind = static_cast<kova_host::ValueKind>(static_cast<unsigned char>(line.front()) % 4);
    item.options = kova_host::parse_options(line.substr(1));
  }
  return item;
}

void check(const kova_host::Item& item, std::string_view text) {
  try {
    const kova_host::Number number = kova_host::value_to_set(item, text);
    const kova_host::JsonPtr json = kova_host::to_json(number);
    FUZZ_EXPECT(json_is_number(json.get()) && std::isfinite(json_number_value(json.get())));
    if (kova_host::parse_number(text) && json_is_integer(json.get())) {
      FUZZ_EXPECT(json_integer_value(json.get()) >= INT32_MIN);
      FUZZ_EXPECT(json_integer_value(json.get()) <= static_cast<json_int_t>(UINT32_MAX));
    }
  } catch (const kova_host::HostError& error) {
    FUZZ_EXPECT(*error.what() != '\0');
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view text(reinterpret_cast<const char*>(data), size);
  const std::string_view first = text.substr(0, text.find('\n'));
  text.remove_prefix(std::min(first.size() + 1, text.size()));
  const kova_host::Item item = item_from(first);
  check(item, text);
  if (const auto id = kova_host::parse_item_id(text)) {
    FUZZ_EXPECT(kova_host::parse_item_id(kova_host::id_text(*id)) == id);
  }
  for (const kova_host::Option& option : item.options) {
    FUZZ_EXPECT(kova_host::same_word(option.label, option.label));
    check(item, option.label);
  }
  return 0;
}
