// Elements and writes by the row.
#include "framework/item.h"

#include "framework/element.h"
#include "framework/iot_json_utility.h"

namespace catalogue {

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

Status write_item(WriteEntry set_func, RawMap& codes, const Row* row, unsigned int id,
                  unsigned int settings, const json_t* value) {
  if (set_func == nullptr) {
    return IOT_STATUS_NOT_READY;
  }
  if (!json_is_number(value)) {
    return IOT_STATUS_INVALID_PARAMETER;
  }
  if (item_id::group(id) != settings && (row == nullptr || !takes_writes(*row))) {
    return IOT_STATUS_UNSUPPORTED;
  }
  const bool elsewhere = row != nullptr && row->written_at != 0;
  const unsigned int target =
      elsewhere ? row->written_at + item_id::index(id) - item_id::index(row->id) : id;
  return set_func(codes[target], row != nullptr ? word_of(row->as, value) : 0) == 0
             ? IOT_STATUS_SUCCESS
             : IOT_STATUS_WRITE_FAILED;
}

}  // namespace catalogue
