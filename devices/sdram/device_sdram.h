// Device_SDRAM: the memory modules. Every field is decoded from the modules' SPD data to a text,
// which is published as a string, an integer or a real. The family takes no writes.
#pragma once

#include <jansson.h>

#include <memory>
#include <string>

#include "devices/sdram/sdram_items.h"
#include "framework/catalogue.h"
#include "framework/device_library.h"
#include "framework/status.h"
#include "framework/text_family.h"

class SdRamFunc;

/// An item ID is 0x1418ssmm: the field's selector ss and the module number mm, counted from 1. The
/// info ID is the item ID with mm cleared; the catalogue maps are keyed by it, so that all modules
/// share names, units and ranges. Module indices count from 0; their low four bits reach the
/// device library.
class Device_SDRAM : public text_item::TextFamily<Device_SDRAM, unsigned int> {
 public:
  static constexpr unsigned int kFamily = sdram::kFamily;
  static const text_item::Family& items() { return sdram::kItems; }

  static ReadEntry get_func;  ///< null until the manager has loaded the device library
  static StringMap device_name_map;
  static StringMap unit_map;
  static RangeMap bound_map;

  /// Hands `get_func` to the decoder, so it must be set before: without it every read fails with
  /// IOT_STATUS_NOT_READY.
  Device_SDRAM();
  ~Device_SDRAM();
  Device_SDRAM(const Device_SDRAM&) = delete;
  Device_SDRAM& operator=(const Device_SDRAM&) = delete;

  static StringMap init_device_name_map();
  static StringMap init_unit_map();
  static RangeMap init_bound_map();

  /// True when the device library reports at least one module.
  [[nodiscard]] bool is_available() const;

  /// The number of modules as the device library reports it, unchecked; 0 when unreadable.
  [[nodiscard]] unsigned int GetSDRAMCount() const;

  /// Adds the fields of one module to the info map; always IOT_STATUS_SUCCESS.
  Status update_info(const unsigned int& module);

  /// Reads one module afresh and returns a copy of its 14 fields by info ID. A field that cannot
  /// be read is "N/A".
  StringMap get_info_map(const unsigned int& module);

  /// Adds all 14 fields of a module to `*map`, or one of them; "N/A" stands for a field that
  /// cannot be read, and an entry already there stays. All: always IOT_STATUS_SUCCESS; one: the
  /// decoder's status.
  Status get_info_to_map(StringMap* map, const unsigned int& module) const;
  Status get_info_to_map_single(StringMap* map, const unsigned int& module,
                                const unsigned int& info_id) const;

  /// Reads an item into the caller's value: a real for voltage (V) and temperature (degrees
  /// Celsius), an integer for size (GB) and rank, a string for the rest. A value of another JSON
  /// type, or a text that is not UTF-8, leaves the value as it was without an error.
  /// IOT_STATUS_NOT_READY when no module is present, IOT_STATUS_READ_FAILED for another family's
  /// ID, IOT_STATUS_UNDEFINED_ITEM for a field that does not exist, IOT_STATUS_UNSUPPORTED for a
  /// field that the module does not carry, or the device library's code.
  Status get_value_by_id(unsigned int id, json_t* value) const;

 private:
  StringMap info_;
  std::unique_ptr<SdRamFunc> decoder_;
};
