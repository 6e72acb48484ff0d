// docs/items.md: its whole text.
#pragma once

#include <string>

/// Throws std::runtime_error, naming the row, when the rows do not make a whole list.
std::string items_markdown();
