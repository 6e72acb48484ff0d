// Elements by the row.
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

}  // namespace catalogue
