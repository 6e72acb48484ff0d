// Raw words to published values and elements, and back.
#include "framework/item.h"

#include "framework/element.h"
#include "framework/iot_json_utility.h"
#include "framework/written_value.h"

namespace catalogue {
namespace {

// The part of the word that an element shows.
unsigned int shown_part(const Shape& as, unsigned int raw) {
  return as.word == Word::kLowByteInDocument ? raw & 0xFFU : raw;
}

}  // namespace

Status create_first_keys(const Row& row, const std::string& name, unsigned int id, unsigned int raw,
                         json_t** out) {
  const auto create = [&](auto value) {
    return IoTJsonUtility::create_json_element(name, id, value, access(row.as), ui_hint(row), out);
  };
  const unsigned int shown = shown_part(row.as, raw);
  switch (row.as.kind) {
    case Kind::kReal:
      return create(real_of(row.as, raw));
    case Kind::kInteger:
      return create(row.as.truncated ? truncated_of(row.as, raw) : static_cast<int>(shown));
    case Kind::kSwitch:
      return create(shown != 0);
    case Kind::kText:
    case Kind::kNone:
      break;
  }
  return IOT_STATUS_JSON_ERROR;
}

std::uint32_t word_of(const Shape& as, const json_t* value) {
  switch (as.kind) {
    case Kind::kReal:
      return scaled_word(value, steps_per_unit(as));
    case Kind::kInteger:
      return integer_word(value);
    case Kind::kSwitch:
      return switch_word(value);
    case Kind::kText:
    case Kind::kNone:
      break;
  }
  return 0;
}

Status create_element(const ElementMaps& maps, const Row* row, unsigned int id, const void* data,
                      json_t** out) {
  return build_element(out, [&] {
    const std::string& name = maps.names[id];
    if (row != nullptr && row->as.kind == Kind::kText) {
      IoTJsonUtility::create_json_element(name, id, *static_cast<const std::string*>(data),
                                          access(row->as), ui_hint(*row), out);
    } else if (row != nullptr) {
      create_first_keys(*row, name, id, *static_cast<const unsigned int*>(data), out);
    }
    return end_element(out, {.options = std::string(row != nullptr ? row->offered : ""),
                             .range = range_by_id(maps.bounds, id),
                             .description = text_by_id(maps.options, id),
                             .unit = text_by_id(maps.units, id)});
  });
}

Status write_item(WriteEntry set_func, RawMap& codes, bool writable, unsigned int target,
                  const Shape& as, const json_t* value) {
  if (set_func == nullptr) {
    return IOT_STATUS_NOT_READY;
  }
  if (!json_is_number(value)) {
    return IOT_STATUS_INVALID_PARAMETER;
  }
  if (!writable) {
    return IOT_STATUS_UNSUPPORTED;
  }
  return set_func(codes[target], word_of(as, value)) == 0 ? IOT_STATUS_SUCCESS
                                                          : IOT_STATUS_WRITE_FAILED;
}

}  // namespace catalogue
