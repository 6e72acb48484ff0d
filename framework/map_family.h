// MapFamily: what the families with catalogue maps share: the lookups and raw reads over the
// class's own maps, and the published reads and elements that its rows tell.
#pragma once

#include <jansson.h>

#include <string>

#include "framework/catalogue.h"
#include "framework/item.h"
#include "framework/row_table.h"

namespace catalogue {

/// Base of a class `Device` that has the static members device_name_map, unit_map, desc_map,
/// kova_id_map, bound_map and get_func (and set_func, if it takes writes), and:
///   table()           its rows
///   kPresence         the ID of its presence item
///   kFamily, sheet()  which module/ asks for
template <typename Device>
class MapFamily {
 public:
  static StringMap init_device_name_map() { return name_map(Device::table().rows()); }
  static StringMap init_unit_map() { return catalogue::unit_map(Device::table().rows()); }
  static StringMap init_desc_map() { return option_map(Device::table().rows()); }
  static RawMap init_kova_id_map() { return code_map(Device::table().rows()); }
  static RangeMap init_bound_map() { return catalogue::bound_map(Device::table().rows()); }

  /// The common lookups: "", or an empty range, for an ID without an entry.
  static Status get_string_from_map(const StringMap& map, unsigned int id, std::string* out) {
    return catalogue::get_string_from_map(map, id, out);
  }
  static std::string get_name_by_id(unsigned int id) {
    return text_by_id(Device::device_name_map, id);
  }
  static std::string get_unit_by_id(unsigned int id) { return text_by_id(Device::unit_map, id); }
  static std::string get_desc_by_id(unsigned int id) { return text_by_id(Device::desc_map, id); }
  static Range get_range_by_id(unsigned int id) { return range_by_id(Device::bound_map, id); }

  /// True when the presence item reads as non-zero.
  static bool is_available() {
    return catalogue::is_available(Device::get_func, Device::kova_id_map, Device::kPresence);
  }

  /// Reads one raw word: IOT_STATUS_NOT_READY (no read entry), IOT_STATUS_READ_FAILED.
  static Status get_value_by_id(unsigned int id, unsigned int* raw) {
    return read_raw(Device::get_func, Device::kova_id_map, id, raw);
  }

  /// Refills `*out` with the raw words of the items first..end-1 that can be read; leaves it as it
  /// was when the family is absent.
  static void get_raw_values(unsigned int first, unsigned int end, RawMap* out) {
    read_raw_range(Device::get_func, Device::kova_id_map, Device::kPresence, first, end, out);
  }

 protected:
  static void get_raw_values(Ids ids, RawMap* out) { get_raw_values(ids.first, ids.end, out); }

  // Reads an item by its row into the caller's value: see the families' get_value_by_id.
  static Status read_item(const Row* row, unsigned int id, json_t* value) {
    if (!catalogue::is_available(Device::get_func, Device::kova_id_map, Device::kPresence)) {
      return IOT_STATUS_NOT_READY;
    }
    if (row == nullptr) {
      return IOT_STATUS_UNSUPPORTED;
    }
    if (row->as.kind == Kind::kText) {
      return publish_text(Device::get_func, Device::kova_id_map, Device::table(), id, value);
    }
    return read_number(row, id, value);
  }

  static Status read_number(const Row* row, unsigned int id, json_t* value) {
    unsigned int raw = 0;
    const Status status = get_value_by_id(id, &raw);
    if (status == IOT_STATUS_SUCCESS && row != nullptr) {
      publish(row->as, raw, value);
    }
    return status;
  }

  static Status read_texts(StringMap* out) {
    return catalogue::read_texts(Device::get_func, Device::kova_id_map, Device::table(), out);
  }

  // Writes a JSON number to the code of the item `target`, as `row` says, or 0 where there is none.
  // The checks in order: IOT_STATUS_NOT_READY (no write entry), IOT_STATUS_INVALID_PARAMETER (no
  // number), IOT_STATUS_UNSUPPORTED (not `writable`), IOT_STATUS_WRITE_FAILED. A target without a
  // code is written at code 0.
  static Status write_item(const Row* row, bool writable, unsigned int target,
                           const json_t* value) {
    if (Device::set_func == nullptr) {
      return IOT_STATUS_NOT_READY;
    }
    if (!json_is_number(value)) {
      return IOT_STATUS_INVALID_PARAMETER;
    }
    if (!writable) {
      return IOT_STATUS_UNSUPPORTED;
    }
    const std::uint32_t word = row != nullptr ? word_of(row->as, value) : 0;
    return Device::set_func(code_of(Device::kova_id_map, target), word) == 0
               ? IOT_STATUS_SUCCESS
               : IOT_STATUS_WRITE_FAILED;
  }

  static Status create_element(const Row* row, unsigned int id, const void* data, json_t** out) {
    return catalogue::create_element({.names = Device::device_name_map,
                                      .units = Device::unit_map,
                                      .options = Device::desc_map,
                                      .bounds = Device::bound_map},
                                     row, id, data, out);
  }
};

}  // namespace catalogue
