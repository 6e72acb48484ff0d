// Aligned tables of items.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/host/reading.h"
#include "tools/kovactl/terminal.h"

namespace kovactl {

using namespace kova_host;

// Every item with its value, range and access, under a heading for each package. Within `width`
// columns the ranges give way first, then the access, then what is too long of packages and names;
// a value is always whole.
std::string item_table(const std::vector<Item>& items, const Readings& readings,
                       const Painter& paint, std::optional<size_t> width);

}  // namespace kovactl
