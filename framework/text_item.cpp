// From an item's text to the caller's JSON value and to the item's element.
#include "framework/text_item.h"

#include <algorithm>

#include "framework/element.h"
#include "framework/iot_json_utility.h"
#include "framework/item_id.h"
#include "framework/text_number.h"

namespace text_item {
namespace {

using catalogue::Kind;

Kind kind_of(const Family& family, unsigned int info_id) {
  const auto row = std::ranges::find(family.rows, info_id, &catalogue::Row::id);
  return row == family.rows.end() ? Kind::kText : row->as.kind;
}

void create_first_keys(const Family& family, unsigned int id, const std::string& text,
                       json_t** out) {
  const unsigned int info_id = item_id::group(id);
  const std::string& name = family.names[info_id];
  const auto create = [&](const auto& value) {
    IoTJsonUtility::create_json_element(name, id, value, "r", "label", out);
  };
  switch (kind_of(family, info_id)) {
    case Kind::kReal:
      return create(real_from_text(text));
    case Kind::kInteger:
      return create(integer_from_text(text));
    case Kind::kText:
    case Kind::kSwitch:
    case Kind::kNone:
      return create(text);
  }
}

}  // namespace

void set_value(const Family& family, unsigned int id, const std::string& text, json_t* value) {
  switch (kind_of(family, item_id::group(id))) {
    case Kind::kReal:
      json_real_set(value, real_from_text(text));
      break;
    case Kind::kInteger:
      json_integer_set(value, integer_from_text(text));
      break;
    case Kind::kText:
    case Kind::kSwitch:
    case Kind::kNone:
      json_string_set(value, text.c_str());
      break;
  }
}

Status create_element(const Family& family, unsigned int id, const std::string* text,
                      json_t** out) {
  return build_element(out, [&] {
    if (item_id::family(id) == family.family_id) {
      create_first_keys(family, id, *text, out);
    }
    const unsigned int info_id = item_id::group(id);
    return end_element(out, {.range = catalogue::range_by_id(family.bounds, info_id),
                             .unit = catalogue::text_by_id(family.units, info_id)});
  });
}

}  // namespace text_item
