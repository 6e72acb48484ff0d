// The six families, each by its sheet.
#pragma once

#include <array>

#include "framework/row.h"

/// In the order of the capability document.
std::array<const catalogue::Sheet*, 6> family_sheets();
