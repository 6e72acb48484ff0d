// Device_PoE: the Power-over-Ethernet ports. Names, units, ranges and device codes are computed
// from the item ID; there are no catalogue maps.
#pragma once

#include <jansson.h>

#include <map>
#include <string>

#include "devices/poe/poe_items.h"
#include "framework/catalogue.h"
#include "framework/device_library.h"
#include "framework/status.h"

/// Per port P (1..8): power switch 0x14140B00 + P, detection state (0x0800), power class (0x0900),
/// voltage (0x0200, volts) and current (0x0400, published as "mA").
class Device_PoE {
 public:
  static constexpr unsigned int kFamily = poe::kFamily;
  static const catalogue::Sheet& sheet() { return poe::kSheet; }

  static ReadEntry get_func;  ///< null until the manager has loaded the device library
  static WriteEntry set_func;
  static const std::string NAME_DEVICE;
  static constexpr double FACTOR = 0.001;  ///< raw voltage and current to published values

  /// Counts the ports, which reads the device: `get_func` must be set before.
  Device_PoE();

  /// The device library's code of an item, or kNoCode. The port number is not range-tested.
  static unsigned int getKovaID(unsigned int id);
  static constexpr unsigned int kNoCode = 0xFFFFFFFF;

  /// Raw read and write: the device library's own result, or IOT_STATUS_UNSUPPORTED for an item
  /// without a code or a missing library entry.
  static Status get_value_by_id(unsigned int id, unsigned int* raw);
  static Status set_value_by_id(unsigned int id, unsigned int raw);

  /// Reads an item into the caller's value: a real for voltage and current, an integer (the whole
  /// raw word) for the rest. IOT_STATUS_NOT_READY when the family is absent, the device library's
  /// code when the read fails, IOT_STATUS_UNSUPPORTED for an item that is not published.
  static Status get_value_by_id(unsigned int id, json_t* value);

  /// Switches a port: an integer of 1 and more turns it on, any other off. The device is written
  /// only when the state changes. IOT_STATUS_NOT_READY (absent), IOT_STATUS_UNSUPPORTED (no power
  /// switch), IOT_STATUS_INVALID_PARAMETER (no integer), or the device library's code.
  static Status set_value_by_id(unsigned int id, json_t* value);

  static bool is_available();

  /// Number of ports as the port probes answer: 8, 4 or 0.
  static unsigned char getPortNumber();

  static std::string get_name_by_id(unsigned int id);
  static std::string get_unit_by_id(unsigned int id);
  static std::string get_desc_by_id(unsigned int id);
  static Range get_range_by_id(unsigned int id);

  /// Makes the element of a port item. `data` points at its raw value: an unsigned int for voltage
  /// and current, a byte for the rest. `*out` receives the caller's reference, or null with
  /// IOT_STATUS_JSON_ERROR (no such kind) or IOT_STATUS_NOT_READY (memory ran out).
  static Status create_json_element(unsigned int id, void* data, json_t** out);

  using ByteMap = std::map<unsigned int, unsigned char>;

  /// Refreshes one kind over all ports and returns a copy of its map. A port whose read fails
  /// keeps the value of an earlier refresh, or has no entry.
  ByteMap get_poe_port_power();
  ByteMap get_poe_detects();
  ByteMap get_poe_classes();
  RawMap get_poe_voltages();
  RawMap get_poe_currents();

  [[nodiscard]] unsigned char port_count() const { return port_count_; }

 private:
  template <typename Value>
  void refresh(unsigned int kind, std::map<unsigned int, Value>* map) const;

  ByteMap power_;
  ByteMap detects_;
  ByteMap classes_;
  RawMap voltages_;
  RawMap currents_;
  unsigned char port_count_ = 0;
};
