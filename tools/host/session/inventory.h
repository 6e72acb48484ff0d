// Every item that a machine has or should have: what its capability document lists, and what was
// missing from it because it could not be read at the start.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/host/model/item_data.h"
#include "tools/host/session/session.h"

namespace kova_host {

class Inventory {
 public:
  // Of the started module's machine. A family is there if the document has it, or if a read of one
  // of its items answers anything but IOT_STATUS_NOT_READY; ports and modules are as many as
  // instances_there() finds. Asks the device about families that the document lacks, and for the
  // counts. Throws HostError (no_device) if there is no document.
  static Inventory of(const Session& session);

  // The items of a document, completed by those that should be in it. Names, units, ranges and
  // options of the document hold, since a device reports ranges of its own.
  Inventory(std::vector<Item> published, const std::vector<Item>& expected);

  // In the order of the document. An item may stand in two families, under the same ID.
  const std::vector<Item>& items() const { return items_; }

  // Null for an ID that the machine does not have.
  const Item* find(uint32_t id) const;

 private:
  std::vector<Item> items_;
};

// How many instances the device counts; 0 when it does not answer, or with more than the rule's
// `max`, which is no count.
using ReadWord = std::function<std::optional<uint32_t>(uint32_t code)>;
uint32_t count_instances(const InstanceRule& rule, const ReadWord& read);

// How many instances there are of a family that has some, where the document has `published`. The
// device's count can be garbled, now or when the module has read it: a count holds if it stands
// twice, and an instance above it if its first word can be read.
uint32_t instances_there(const FamilyData& family, uint32_t published, const ReadWord& read);

}  // namespace kova_host
