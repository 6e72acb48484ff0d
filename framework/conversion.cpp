// Elements, texts and written words; every result is defined for every input.
#include "framework/conversion.h"

#include "framework/iot_json_utility.h"

namespace catalogue {

std::uint32_t scaled_word(const json_t* value, std::uint32_t steps) {
  if (!json_is_real(value)) {
    return static_cast<std::uint32_t>(json_integer_value(value)) * steps;
  }
  // 2^63: the first double above every 64-bit integer. NaN fails both comparisons.
  constexpr double kTooLarge = 9223372036854775808.0;
  const double scaled = json_real_value(value) * steps;
  if (!(scaled >= -kTooLarge && scaled < kTooLarge)) {
    return 0;
  }
  return static_cast<std::uint32_t>(static_cast<std::int64_t>(scaled));
}

void publish_by_columns(const Shape& as, std::uint32_t raw, json_t* value) {
  switch (as.kind) {
    case Kind::kReal:
      json_real_set(value, real_value(as, raw, View::kSingleRead));
      break;
    case Kind::kInteger:
      json_integer_set(value, integer_value(as, raw, View::kSingleRead));
      break;
    case Kind::kSwitch:
      json_integer_set(value, switch_value(as, raw, View::kSingleRead));
      break;
    case Kind::kText:
    case Kind::kNone:
      break;
  }
}

Status create_first_keys(const Row& row, const std::string& name, unsigned int id,
                         std::uint32_t raw, json_t** out) {
  const auto create = [&](auto value) {
    return IoTJsonUtility::create_json_element(name, id, value, access(row.as), ui_hint(row), out);
  };
  switch (row.as.kind) {
    case Kind::kReal:
      return create(real_value(row.as, raw, View::kDocument));
    case Kind::kInteger:
      return create(static_cast<int>(integer_value(row.as, raw, View::kDocument)));
    case Kind::kSwitch:
      return create(switch_value(row.as, raw, View::kDocument) != 0);
    case Kind::kText:
    case Kind::kNone:
      break;
  }
  return IOT_STATUS_JSON_ERROR;
}

std::string text_of(const Row& row, std::uint32_t raw) {
  if (row.text != nullptr) {
    return row.text(raw);
  }
  return row.as.kind == Kind::kReal ? To_String(real_of(row.as, raw))
                                    : std::to_string(whole_of(row.as, raw, View::kSingleRead));
}

}  // namespace catalogue
