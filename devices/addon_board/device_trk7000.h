// Device_TRK7000: the add-on board: its temperature sensors, on-board fans and identity. Read-only.
#pragma once

#include <jansson.h>

#include <string>

#include "devices/addon_board/trk7000_items.h"
#include "framework/map_family.h"

/// Groups: temperatures 0x141701xx (whole degrees Celsius), fan speeds 0x141703xx (revolutions per
/// minute), information 0x141706xx (texts).
class Device_TRK7000 : public catalogue::MapFamily<Device_TRK7000> {
 public:
  static constexpr unsigned int kFamily = trk7000::kFamily;
  static constexpr unsigned int kPresence = trk7000::kPresence;
  static const catalogue::RowTable& table() { return trk7000::kTable; }
  static const catalogue::Sheet& sheet() { return trk7000::kSheet; }

  static ReadEntry get_func;  ///< null until the manager has loaded the device library

  static const std::string NAME_DEVICE;
  static StringMap device_name_map;
  static StringMap unit_map;
  static StringMap desc_map;  ///< empty: no item of the board has options
  static RawMap kova_id_map;
  static RangeMap bound_map;

  using MapFamily::get_value_by_id;

  /// Refills `*out` with the information texts. IOT_STATUS_NOT_READY without a read entry;
  /// IOT_STATUS_READ_FAILED, and `*out` as it was, when nothing could be read.
  static Status get_info_to_map(StringMap* out);

  /// Reads an item into the caller's value: a string for information, an integer for fan speeds
  /// and temperatures (of which half a degree and the cut toward zero make -0.65 degrees 0). On a
  /// failure the value is left as it was: IOT_STATUS_NOT_READY (absent), IOT_STATUS_READ_FAILED,
  /// IOT_STATUS_NOT_FOUND (information ID without a text), IOT_STATUS_UNSUPPORTED (other groups).
  static Status get_value_by_id(unsigned int id, json_t* value);

  /// Makes an item's element. `value` points at the std::string of an information item, else at
  /// the raw unsigned int. `*out` receives the caller's reference, or null with
  /// IOT_STATUS_JSON_ERROR (no such item) or IOT_STATUS_NOT_READY (memory ran out).
  static Status create_json_element(unsigned int id, void* value, json_t** out);

  // Bulk views: a copy of the refreshed caches, without the items that could not be read.
  RawMap get_temps();
  RawMap get_ob_fans();
  StringMap get_info_map();

  void update_temps();
  void update_ob_fans();
  Status update_info();

 private:
  RawMap ob_fan_values_;
  RawMap vtin_values_;
  RawMap bt_values_;
  StringMap info_values_;
};
