// Device_SBATTERY: the smart battery. Every register is decoded to a text, which is published as a
// string, an integer or a real. The family takes no writes.
#pragma once

#include <jansson.h>

#include <memory>
#include <string>

#include "devices/sbattery/sbattery_items.h"
#include "framework/catalogue.h"
#include "framework/device_library.h"
#include "framework/status.h"
#include "framework/text_family.h"

class SBatteryFunc;

/// An item ID is 0x1419ss00 with the field's selector ss. There is one battery: bits 7..0 are
/// ignored by single reads and elements.
class Device_SBATTERY : public text_item::TextFamily<Device_SBATTERY, const unsigned int&> {
 public:
  static constexpr unsigned int kFamily = sbattery::kFamily;
  static const text_item::Family& items() { return sbattery::kItems; }

  static ReadEntry get_func;  ///< null until the manager has loaded the device library
  static StringMap device_name_map;
  static StringMap unit_map;
  static RangeMap bound_map;

  /// Hands `get_func` to the decoder, so it must be set before: without it every read fails with
  /// IOT_STATUS_NOT_READY. Fills the catalogue maps, which are empty until then.
  Device_SBATTERY();
  ~Device_SBATTERY();
  Device_SBATTERY(const Device_SBATTERY&) = delete;
  Device_SBATTERY& operator=(const Device_SBATTERY&) = delete;

  /// Fill the class's maps in place; entries of other IDs, and ranges already there, stay.
  static void init_device_name_map();
  static void init_device_unit_map();
  static void init_bound_map();

  /// True when the presence read succeeds, whatever it reads.
  [[nodiscard]] bool is_available() const;

  /// Adds all 18 fields to the info map; the status of the last of them, the error codes.
  Status update_info();

  /// Reads the battery afresh and returns a copy of its 18 fields by item ID. A field that cannot
  /// be read is "N/A".
  StringMap get_info_map();

  /// Adds one field to `*map`, "N/A" when it cannot be read; an entry already there stays. The
  /// decoder's status.
  Status get_info_to_map_single(StringMap* map, const unsigned int& id) const;

  /// Reads an item into the caller's value: a real for the temperature (degrees Celsius), an
  /// integer for voltages (mV), current (mA), capacities (mAh), charge and health (%) and cycles, a
  /// string for the rest. A value of another JSON type, or a text that is not UTF-8, leaves the
  /// value as it was without an error. IOT_STATUS_NOT_READY when the battery is absent,
  /// IOT_STATUS_READ_FAILED for another family's ID, IOT_STATUS_NOT_FOUND for a time that does not
  /// apply, or the device library's code. A field that does not exist reads as "N/A".
  Status get_value_by_id(const unsigned int& id, json_t* value) const;

 private:
  std::unique_ptr<SBatteryFunc> decoder_;
  StringMap info_;
};
