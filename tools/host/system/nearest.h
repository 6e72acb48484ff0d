// The word that was probably meant.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kova_host {

// The candidate that differs from `word` by the fewest inserted, deleted, replaced or swapped
// neighbouring characters, letters' case apart; "" if even that one is too far off to be meant.
std::string nearest(std::string_view word, const std::vector<std::string>& candidates);

// ": did you mean 'NEAREST'?", or "" if nothing is near.
std::string suggestion(std::string_view word, const std::vector<std::string>& candidates);

}  // namespace kova_host
