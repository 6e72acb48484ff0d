// Device_PIC: the power and ignition controller of a vehicle computer. It switches the computer
// with the ignition and guards the vehicle battery against deep discharge.
#pragma once

#include <jansson.h>

#include <string>

#include "devices/pic/pic_items.h"
#include "framework/map_family.h"

/// Groups: information 0x14160601.. (texts), settings 0x14160711.. (writable), their factory
/// defaults 0x14160721.., real-time status 0x14160801... A setting n (1..11) stands in five views:
/// current 0x1416071n, default 0x1416072n, write target 0x1416073n, and the minimum 0x1416074n and
/// maximum 0x1416075n that the device reports.
///
/// The base has neither state nor anything virtual: it spares the families with maps the same dozen
/// one-line members each, which no caller can tell from the class's own.
class Device_PIC : public catalogue::MapFamily<Device_PIC> {
 public:
  static constexpr unsigned int kFamily = pic::kFamily;
  static constexpr unsigned int kPresence = pic::kPresence;
  static const catalogue::RowTable& table() { return pic::kTable; }
  static const catalogue::Sheet& sheet() { return pic::kSheet; }

  static ReadEntry get_func;  ///< null until the manager has loaded the device library
  static WriteEntry set_func;
  static constexpr double FACTOR = 0.1;  ///< one raw voltage unit in volts

  static const std::string NAME_DEVICE;
  static StringMap device_name_map;
  static StringMap unit_map;
  static StringMap desc_map;
  static RawMap kova_id_map;
  static RangeMap bound_map;  ///< the settings' ranges become the device's own at construction

  /// Takes the settings' ranges from the device, when there is a read entry.
  Device_PIC();

  using MapFamily::get_value_by_id;

  /// Replaces both ends of an item's range, or makes it.
  static void update_bound_map_by_id(unsigned int id, double min, double max);

  /// True for items whose raw value is in tenths of a volt: settings 6 and 7 in every view, and
  /// the status item "Power input".
  static bool is_transfer_volt(unsigned int id);

  /// Replaces the ranges of each setting whose minimum and maximum the device both reports.
  static void update_bound_map();

  /// Refills `*out` with the information texts. IOT_STATUS_NOT_READY without a read entry;
  /// IOT_STATUS_READ_FAILED, and `*out` as it was, when nothing could be read.
  static Status get_info_to_map(StringMap* out);

  /// Reads an item into the caller's value: a string for information, a real in volts for voltage
  /// items, else an integer. On a failure the value is left as it was: IOT_STATUS_NOT_READY
  /// (absent), IOT_STATUS_READ_FAILED, IOT_STATUS_NOT_FOUND (information ID without a text),
  /// IOT_STATUS_UNSUPPORTED (other groups).
  static Status get_value_by_id(unsigned int id, json_t* value);

  /// Writes a setting. Whatever the view of the ID, setting n's write target is written; the
  /// device checks the range. IOT_STATUS_NOT_READY (no write entry), IOT_STATUS_INVALID_PARAMETER
  /// (no number), IOT_STATUS_UNSUPPORTED (no setting), IOT_STATUS_WRITE_FAILED.
  static Status set_value_by_id(unsigned int id, json_t* value);

  /// Makes an item's element. `value` points at the std::string of an information item, else at
  /// the raw unsigned int. `*out` receives the caller's reference, or null with
  /// IOT_STATUS_JSON_ERROR (no such item) or IOT_STATUS_NOT_READY (memory ran out).
  static Status create_json_element(unsigned int id, void* value, json_t** out);

  // Bulk views: a copy of the group's refreshed cache, without the items that could not be read.
  StringMap get_info_map();
  RawMap get_status_map();
  RawMap get_defaults_map();
  RawMap get_settings_map();

  void update_info();
  void update_status();
  void update_defaults();
  void update_settings();

 private:
  static void update_bounds_of(unsigned int setting);

  StringMap info_;
  RawMap status_;
  RawMap defaults_;
  RawMap settings_;
};
