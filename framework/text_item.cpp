// From an item's words to its text, to the caller's JSON value and to the item's element.
#include "framework/text_item.h"

#include <utility>

#include "framework/conversion.h"
#include "framework/element.h"
#include "framework/iot_json_utility.h"
#include "framework/item_id.h"
#include "framework/text_number.h"

namespace text_item {
namespace {

using catalogue::Kind;
using catalogue::Row;

const Row* find_row(const Family& family, unsigned int field_id) {
  const std::size_t place = family.places[(field_id >> 8) & 0xFFU];
  const bool listed = place < family.sheet.rows.size() && family.sheet.rows[place].id == field_id;
  return listed ? &family.sheet.rows[place] : nullptr;
}

Status decode_row(const Row& row, const WordReader& device, std::string& out) {
  if (row.decode != nullptr) {
    return row.decode(row, device, out);
  }
  unsigned int word = 0;
  const Status status = device.read(*row.code, &word);
  if (status == IOT_STATUS_SUCCESS) {
    out = text_of(row, word);
  }
  return status;
}

Status read_number(const Row& row, const WordReader& device, json_t* value) {
  unsigned int word = 0;
  const Status status = device.read(*row.code, &word);
  if (status == IOT_STATUS_SUCCESS) {
    publish(row.as, word, value);
  }
  return status;
}

// With "N/A" where there is no text.
Status read_text_of(const Row* row, const Family& family, const WordReader& device,
                    std::string& out) {
  const Status status = row != nullptr ? decode_row(*row, device, out) : family.no_such_field;
  if (out.empty()) {
    out = kNotAvailable;
  }
  return status;
}

void create_first_keys(const Family& family, unsigned int id, const std::string& text,
                       json_t** out) {
  const unsigned int field_id = item_id::group(id);
  const std::string& name = family.names[field_id];
  const auto create = [&](const auto& value) {
    IoTJsonUtility::create_json_element(name, id, value, "r", "label", out);
  };
  const Row* const row = find_row(family, field_id);
  switch (row != nullptr ? row->as.kind : Kind::kText) {
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

Status decode(const Family& family, const WordReader& device, unsigned int field_id,
              std::string& out) {
  const Row* const row = find_row(family, field_id);
  return row != nullptr ? decode_row(*row, device, out) : family.no_such_field;
}

Status read_text(const Family& family, const WordReader& device, unsigned int field_id,
                 std::string& out) {
  out.clear();
  return read_text_of(find_row(family, field_id), family, device, out);
}

Status add_text(const Family& family, const WordReader& device, unsigned int field_id,
                StringMap* map) {
  std::string text;
  const Status status = read_text(family, device, field_id, text);
  map->emplace(field_id, status == IOT_STATUS_SUCCESS ? std::move(text) : kNotAvailable);
  return status;
}

Status read_real(const Family& family, const WordReader& device, unsigned int field_id,
                 double* number) {
  const Row* const row = find_row(family, field_id);
  if (row == nullptr || row->as.kind != Kind::kReal) {
    return IOT_STATUS_UNDEFINED_ITEM;
  }
  unsigned int word = 0;
  const Status status = device.read(*row->code, &word);
  if (status == IOT_STATUS_SUCCESS) {
    *number = real_of(row->as, word);
  }
  return status;
}

Status read_value(const Family& family, const WordReader& device, unsigned int id, json_t* value) {
  const Row* const row = find_row(family, item_id::group(id));
  if (row != nullptr && row->as.kind != Kind::kText) {
    return read_number(*row, device, value);
  }
  std::string text;
  const Status status = read_text_of(row, family, device, text);
  if (status == IOT_STATUS_SUCCESS) {
    json_string_set(value, text.c_str());
  }
  return status;
}

Status create_element(const Family& family, unsigned int id, const std::string* text,
                      json_t** out) {
  return build_element(out, [&] {
    if (item_id::family(id) == family.sheet.id) {
      create_first_keys(family, id, *text, out);
    }
    const unsigned int field_id = item_id::group(id);
    return end_element(out, {.range = catalogue::range_by_id(family.bounds, field_id),
                             .unit = catalogue::text_by_id(family.units, field_id)});
  });
}

}  // namespace text_item
