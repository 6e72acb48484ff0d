// Aligned tables of items.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/host/judgements/judgement.h"
#include "tools/kovactl/terminal.h"

namespace kovactl {

// Every item with its value, range, access and the marks of what needs attention, under a heading
// for each package. Within `width` columns the ranges give way first, then the access, then what is
// too long of packages and names; a value is always whole.
std::string item_table(const std::vector<kova_host::Item>& items,
                       const kova_host::Readings& readings,
                       const std::vector<kova_host::Finding>& findings, const Painter& paint,
                       std::optional<size_t> width);

}  // namespace kovactl
