// TextFamily: what the families whose readings are texts share.
#pragma once

#include <jansson.h>

#include <string>

#include "framework/catalogue.h"
#include "framework/item_id.h"
#include "framework/text_item.h"

namespace text_item {

/// Base of a class `Device` that has the static members device_name_map, unit_map and bound_map,
/// and items(), which is its Family. `Id` is how it takes an ID: by value or by reference.
template <typename Device, typename Id>
class TextFamily {
 public:
  static const catalogue::Sheet& sheet() { return Device::items().sheet; }

  /// Makes the element of an item. `data` points at a std::string, the item's decoded text; a
  /// numeric item whose text is no number is published as 0. `*out` receives the caller's
  /// reference, or null with IOT_STATUS_JSON_ERROR (another family's ID, text that is not UTF-8)
  /// or IOT_STATUS_NOT_READY (memory ran out).
  static Status create_json_element(Id id, void* data, json_t** out) {
    return create_element(Device::items(), id, static_cast<const std::string*>(data), out);
  }

  /// Lookups by field ID: an item ID with bits 7..0 clear.
  static std::string get_name_by_id(Id id) {
    return catalogue::text_by_id(Device::device_name_map, id);
  }
  static std::string get_unit_by_id(Id id) { return catalogue::text_by_id(Device::unit_map, id); }
  static Range get_range_by_id(const unsigned int& id) {
    return catalogue::range_by_id(Device::bound_map, id);
  }
  static Status get_string_from_map(const StringMap& map, unsigned int id, std::string* out) {
    return catalogue::get_string_from_map(map, id, out);
  }

 protected:
  // See the families' get_value_by_id.
  static Status read_item(bool is_present, const WordReader& device, unsigned int id,
                          json_t* value) {
    if (!is_present) {
      return IOT_STATUS_NOT_READY;
    }
    if (item_id::family(id) != Device::items().sheet.id) {
      return IOT_STATUS_READ_FAILED;
    }
    return read_value(Device::items(), device, id, value);
  }
};

}  // namespace text_item
