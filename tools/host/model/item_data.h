// What the module's catalogues say of every item of every family. The data is items.json, made
// from the catalogues' rows when the module is built, and compiled into this library: a host
// program cannot lose it, and it is always of the program's own release.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/host/model/item.h"

namespace kova_host {

struct PackageData {
  uint32_t id = 0;
  // Of a family with instances: with "{n}" for the number from 1, or "{i}" for it from 0.
  std::string name;
  std::vector<Item> items;
};

// A group of a package's items that the document shows once more, under another family.
struct SecondPlace {
  std::string family;
  std::string package;
  uint32_t package_id = 0;  // the package whose items these are
};

// A device word that tells how many instances there are.
struct CountRule {
  uint32_t code = 0;
  std::optional<uint32_t> equals;  // with `count`: so many if the word is this
  uint32_t count = 0;              // without `equals` the word itself is the count
};

// Items that repeat: PoE ports, memory modules.
struct InstanceRule {
  std::string word;  // "port"
  uint32_t max = 1;
  uint32_t code_step = 0;
  uint32_t id_step = 0;
  std::vector<CountRule> counted_by;  // the first that holds
};

struct FamilyData {
  std::string name;   // in the document
  std::string title;  // for people
  uint32_t id = 0;
  uint32_t presence_code = 0;
  bool present_if_readable = false;              // else: present if the word there is not 0
  uint32_t status_when_read = 0;                 // of a read that has filled its value, besides 0
  std::optional<uint32_t> status_without_value;  // of an item that has no value on this machine
  std::optional<InstanceRule> instances;
  std::vector<PackageData> packages;
  std::vector<SecondPlace> second_places;

  // The items of a machine that has `count` instances of the family, in the document's order.
  // `count` counts for nothing in a family without instances.
  std::vector<Item> items(uint32_t count) const;
};

// Throws std::runtime_error for a text that is no items.json.
std::vector<FamilyData> parse_item_data(std::string_view json);

// Every family, in the document's order.
const std::vector<FamilyData>& item_data();

// The family that an item ID belongs to, whether or not there is such an item; null for none.
const FamilyData* family_of(uint32_t item_id);

}  // namespace kova_host
