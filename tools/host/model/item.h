// One item: what it is called, what it measures or sets, and how the device knows it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/host/model/options.h"

namespace kova_host {

// Which JSON value an item's read has to be handed.
enum class ValueKind { integer, real, boolean, text };

// What an item is for; exports and comparisons treat these apart.
enum class Role {
  unknown,          // an item that this release knows nothing of beyond the document
  identity,         // fixed for the machine: versions, serial numbers, module data
  reading,          // measured, moves by itself
  state,            // a condition that the device reports
  setting,          // can be written
  factory_default,  // what a setting starts with
};

// How a written number becomes the device's 32-bit word.
enum class WrittenAs {
  integer,  // its low 32 bits
  on_off,   // 1 for more than 0, else 0
  scaled,   // the number divided by the scale, cut to a whole number
};

// What the catalogues say of an item beyond the capability document.
struct ItemFacts {
  Role role = Role::unknown;
  bool is_private = false;      // serial numbers, part numbers, vendor data
  std::vector<uint32_t> codes;  // device codes that a read asks, in order
  std::optional<uint32_t> write_code;
  std::optional<uint32_t> factory_default;     // a setting's: the item that holds its default
  std::optional<uint32_t> factory_default_of;  // a default's: the setting that it belongs to
  std::optional<double> scale;                 // published value of one count of the word
  WrittenAs written_as = WrittenAs::integer;
};

struct Item {
  uint32_t id = 0;
  std::string family;   // such as "PIC"
  std::string package;  // group within the family, such as "Settings"
  std::string name;
  std::string unit;    // as the module spells it; "" if there is none
  std::string access;  // "r", "w" or "rw"
  // Empty for an ID that nothing is known of: such a read has to try.
  std::optional<ValueKind> kind;
  std::optional<double> min;
  std::optional<double> max;
  std::vector<Option> options;
  ItemFacts facts;
  bool published = true;    // false: missing from the document, as it could not be read at start
  bool missing = false;     // true: it was there once, and this machine does not have it
  bool unique_name = true;  // false: another item of the machine is called the same
};

// "integer", "real", "boolean", "text", and back; nothing for another word.
std::string_view kind_name(ValueKind kind);
std::optional<ValueKind> kind_called(std::string_view name);

// "identity", "reading", "state", "setting", "default", and back; "" for unknown.
std::string_view role_name(Role role);
std::optional<Role> role_called(std::string_view name);

// "0x14140B01", the way IDs are written everywhere.
std::string id_text(uint32_t id);

// "PIC/Settings/Low battery detection timer"
std::string path_of(const Item& item);

// The path, or the ID of an item without a name: what an item is called where it must not change
// with the machine's other items.
std::string label_of(const Item& item);

// The name, or the path where the name alone leaves a doubt; "" for an item without a name. For
// people at a terminal.
std::string name_or_path(const Item& item);

// Settles `unique_name` of the items of one machine.
void mark_names_in_doubt(std::vector<Item>& items);

// The label of `value` among the item's options; "" if it has none.
std::string_view option_label(const Item& item, int64_t value);

}  // namespace kova_host
