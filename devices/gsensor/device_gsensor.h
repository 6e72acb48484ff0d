// Device_GSensor: the three-axis accelerometer: its modes, offsets, data rates, measuring range
// and readings.
#pragma once

#include <jansson.h>

#include <string>

#include "devices/gsensor/gsensor_items.h"
#include "framework/map_family.h"

/// Groups: settings 0x141507xx (modes 0x1x, offsets 0x2x, data rates 0x3x, measuring range 0x4x;
/// writable) and readings 0x141509xx. Offsets and readings are in G.
class Device_GSensor : public catalogue::MapFamily<Device_GSensor> {
 public:
  static constexpr unsigned int kFamily = gsensor::kFamily;
  static constexpr unsigned int kPresence = gsensor::kPresence;
  static const catalogue::RowTable& table() { return gsensor::kTable; }
  static const catalogue::Sheet& sheet() { return gsensor::kSheet; }

  static ReadEntry get_func;  ///< null until the manager has loaded the device library
  static WriteEntry set_func;
  static constexpr double FACTOR = 0.0001;  ///< one raw unit of offsets and readings in G

  static const std::string NAME_DEVICE;
  static StringMap device_name_map;
  static StringMap unit_map;
  static StringMap desc_map;
  static RawMap kova_id_map;
  static RangeMap bound_map;

  using MapFamily::get_value_by_id;

  /// Reads an item into the caller's value: a real in G for offsets and readings, an integer for
  /// the rest. A scalar is filled and the result is IOT_STATUS_READ_FAILED all the same; a
  /// non-empty object is left alone with success. Hosts depend on both. IOT_STATUS_NOT_READY when
  /// the accelerometer is absent.
  static Status get_value_by_id(unsigned int id, json_t* value);

  /// Writes a setting; the device checks the range. IOT_STATUS_NOT_READY (no write entry),
  /// IOT_STATUS_INVALID_PARAMETER (no number), IOT_STATUS_UNSUPPORTED (no setting),
  /// IOT_STATUS_WRITE_FAILED.
  static Status set_value_by_id(unsigned int id, json_t* value);

  /// Makes an item's element from the raw unsigned int that `raw` points at. `*out` receives the
  /// caller's reference, or null with IOT_STATUS_JSON_ERROR (no such item) or
  /// IOT_STATUS_NOT_READY (memory ran out).
  static Status create_json_element(unsigned int id, void* raw, json_t** out);

  // Bulk views: a copy of the refreshed caches, without the items that could not be read.
  RawMap get_settings_map();
  RawMap get_data_map();

  void update_settings();
  void update_data();

 private:
  RawMap data_values_;
  RawMap mode_values_;
  RawMap rate_values_;
  RawMap offset_values_;
  RawMap range_values_;
};
