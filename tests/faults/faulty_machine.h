// The module on the reference machine, and what its host sees of it.
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "framework/json_owner.h"
#include "include/kova_iot.h"
#include "tests/support/device_double.h"

/// The reference machine behind a device library that can be loaded; writes succeed on it.
class FaultyMachine : public ::testing::Test {
 public:
  FaultyMachine();
  ~FaultyMachine() override;

 protected:
  /// Back to a module that has just been loaded: stopped, nothing looked up, no device calls.
  void stop();

  DeviceDouble device;
};

/// Drops the entries that lookups of unknown items have left.
void forget_unknown_items();

/// What a host holds after one read: the status and the value, as JSON text.
struct Reading {
  uint32_t status;
  std::string value;
  friend bool operator==(const Reading&, const Reading&) = default;
  friend std::ostream& operator<<(std::ostream& out, const Reading& reading);
};

/// Reads an item into a fresh value of `preset`'s type and content.
Reading read_item(uint32_t id, const json_t* preset);

/// All items of the reference document, each with a value of its JSON type that the reference
/// machine does not report.
const std::map<uint32_t, JsonOwner>& item_presets();

/// The document as a host gets it, with "bt" cleared; null when there is none.
JsonOwner host_document();

/// A JSON value as text, keys in their order; "" for null.
std::string text_of(const json_t* value);
