// The items of a family as docs/items.md and items.json list them: what follows from its rows.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "framework/conversion.h"
#include "framework/row.h"

namespace item_list {

/// A package of the document with its items; of a family with instances, the first instance's.
struct Package {
  std::string name;
  unsigned int id;
  std::string_view unit;
  std::vector<const catalogue::Row*> items;
};

/// The packages in the document's order. Throws std::runtime_error, naming the row, when an item is
/// in none of them or the rows contradict each other.
std::vector<Package> packages_of(const catalogue::Sheet& sheet);

/// The row of an ID; throws when there is none.
const catalogue::Row& row_of(const catalogue::Sheet& sheet, unsigned int id);

/// The item's ID and name; of a family with instances, instance 1's ID and a name with "{n}".
unsigned int id_of(const catalogue::Sheet& sheet, const catalogue::Row& row);
std::string name_of(const catalogue::Sheet& sheet, const catalogue::Row& row);

/// The unit that holds for an item, wherever the document has it.
std::string_view unit_of(const Package& package, const catalogue::Row& row);

/// The device codes that a read of it asks for, in order.
std::vector<unsigned int> codes_of(const catalogue::Row& row);

/// The code that takes its writes, and that is asked for the setting's ends.
unsigned int write_code_of(const catalogue::Sheet& sheet, const catalogue::Row& row);

/// What the rows say of a conversion, and the row's own note.
std::string note_of(const catalogue::Row& row);

/// The values and labels of an option list.
std::vector<std::pair<int, std::string>> options_of(const catalogue::Row& row);

/// The values of a list such as "1|2|4|8".
std::vector<int> offered_of(const catalogue::Row& row);

}  // namespace item_list
