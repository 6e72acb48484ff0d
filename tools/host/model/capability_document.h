// The items that stand in a capability document.
#pragma once

#include <vector>

#include "tools/host/model/item.h"
#include "tools/host/system/json_ptr.h"

namespace kova_host {

// In the order of the document; an item may stand in two families, under the same ID. Anything
// that is not a family, a package or an element is passed over.
std::vector<Item> items_of_document(const json_t* document);

}  // namespace kova_host
