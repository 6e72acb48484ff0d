// The items that a module offers, taken from its capability document.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/host/json_ptr.h"
#include "tools/host/text_value.h"

namespace kova_host {

// Which JSON value an item's read has to be handed.
enum class ValueKind { integer, real, boolean, text };

struct Item {
  uint32_t id = 0;
  std::string family;   // such as "PIC"
  std::string package;  // group within the family, such as "Settings"
  std::string name;
  std::string unit;    // as the module spells it; "" if there is none
  std::string access;  // "r", "w" or "rw"
  // Empty for an ID that the document does not list: such a read has to try.
  std::optional<ValueKind> kind;
  std::optional<double> min;
  std::optional<double> max;
  std::vector<Option> options;
};

std::string_view kind_name(ValueKind kind);

// "0x14140B01", the way IDs are written everywhere.
std::string id_text(uint32_t id);

// The label of `value` among the item's options; "" if it has none.
std::string_view option_label(const Item& item, int64_t value);

class Catalogue {
 public:
  // Anything in `document` that is not a family, a package or an element is passed over.
  static Catalogue from_document(const json_t* document);

  // In the order of the document. An item may stand in two families, under the same ID.
  const std::vector<Item>& items() const { return items_; }

  // Every ID once, at its first place in the document.
  std::vector<Item> distinct_items() const;

  // The items of one family, its name compared without regard to case.
  std::vector<Item> family_items(std::string_view family) const;

  std::vector<std::string> family_names() const;

  // Null if the document does not list the ID.
  const Item* find(uint32_t id) const;

  // What is known of an ID: its listed item, or one that bears nothing but the ID.
  Item describe(uint32_t id) const;
  std::vector<Item> describe(const std::vector<uint32_t>& ids) const;

 private:
  std::vector<Item> items_;
};

}  // namespace kova_host
