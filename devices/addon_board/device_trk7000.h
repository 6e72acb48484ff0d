// Device_TRK7000: the add-on board: its temperature sensors, on-board fans and identity. Read-only.
#pragma once

#include <jansson.h>

#include <string>

#include "framework/catalogue.h"
#include "framework/device_library.h"
#include "framework/status.h"

/// Groups: temperatures 0x141701xx (whole degrees Celsius), fan speeds 0x141703xx (revolutions per
/// minute), information 0x141706xx (texts).
class Device_TRK7000 {
 public:
  static ReadEntry get_func;  ///< null until the manager has loaded the device library

  static const std::string NAME_DEVICE;
  static StringMap device_name_map;
  static StringMap unit_map;
  static StringMap desc_map;  ///< empty: no item of the board has options
  static RawMap kova_id_map;
  static RangeMap bound_map;

  static StringMap init_device_name_map();
  static StringMap init_unit_map();
  static StringMap init_desc_map();
  static RawMap init_kova_id_map();
  static RangeMap init_bound_map();

  // The common lookups and raw reads, over this family's maps.
  static Status get_string_from_map(const StringMap& map, unsigned int id, std::string* out);
  static std::string get_name_by_id(unsigned int id);
  static std::string get_unit_by_id(unsigned int id);
  static std::string get_desc_by_id(unsigned int id);
  static Range get_range_by_id(unsigned int id);
  static bool is_available();
  static Status get_value_by_id(unsigned int id, unsigned int* raw);
  static void get_raw_values(unsigned int first, unsigned int end, RawMap* out);

  /// Refills `*out` with the information texts. IOT_STATUS_NOT_READY without a read entry;
  /// IOT_STATUS_READ_FAILED, and `*out` as it was, when nothing could be read.
  static Status get_info_to_map(StringMap* out);

  /// Reads an item into the caller's value: a string for information, else an integer. On a
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

/// Tenths of a kelvin to whole degrees Celsius: half a degree is added and the result truncated
/// toward zero, so -0.65 degrees reads 0.
int decikelvin_to_celsius(unsigned int decikelvin);
