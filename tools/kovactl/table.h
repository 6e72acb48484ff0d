// Aligned tables of items.
#pragma once

#include <string>
#include <vector>

#include "tools/host/reading.h"
#include "tools/kovactl/terminal.h"

namespace kovactl {

using namespace kova_host;

// Every item with its value, range and access, under a heading for each package.
std::string item_table(const std::vector<Item>& items, const Readings& readings,
                       const Painter& paint);

}  // namespace kovactl
