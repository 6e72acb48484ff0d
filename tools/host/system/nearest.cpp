// The word that was probably meant.
#include "tools/host/system/nearest.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>

#include "tools/host/system/typed_number.h"

namespace kova_host {
namespace {

// Optimal string alignment distance.
size_t distance(std::string_view a, std::string_view b) {
  std::vector<std::vector<size_t>> edits(a.size() + 1, std::vector<size_t>(b.size() + 1));
  for (size_t i = 0; i <= a.size(); ++i) {
    for (size_t j = 0; j <= b.size(); ++j) {
      if (i == 0 || j == 0) {
        edits[i][j] = i + j;
        continue;
      }
      const bool same = same_word(a.substr(i - 1, 1), b.substr(j - 1, 1));
      edits[i][j] = std::min(
          {edits[i - 1][j] + 1, edits[i][j - 1] + 1, edits[i - 1][j - 1] + (same ? 0 : 1)});
      if (i > 1 && j > 1 && same_word(a.substr(i - 1, 1), b.substr(j - 2, 1)) &&
          same_word(a.substr(i - 2, 1), b.substr(j - 1, 1))) {
        edits[i][j] = std::min(edits[i][j], edits[i - 2][j - 2] + 1);
      }
    }
  }
  return edits[a.size()][b.size()];
}

}  // namespace

std::string nearest(std::string_view word, const std::vector<std::string>& candidates) {
  constexpr size_t kLongestWord = 128;  // what is longer was no slip of the pen
  if (word.size() > kLongestWord) {
    return "";
  }
  std::string best;
  size_t least = std::max<size_t>(1, word.size() / 3) + 1;
  for (const std::string& candidate : candidates) {
    if (const size_t edits = distance(word, candidate); edits < least) {
      least = edits;
      best = candidate;
    }
  }
  return best;
}

std::string suggestion(std::string_view word, const std::vector<std::string>& candidates) {
  const std::string meant = nearest(word, candidates);
  return meant.empty() ? "" : fmt::format(": did you mean '{}'?", meant);
}

}  // namespace kova_host
