// The word that was probably meant.
#include "tools/host/system/nearest.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <numeric>

namespace kova_host {
namespace {

std::string folded(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  return result;
}

// Optimal string alignment distance. Three rows of the table of edits are all that it looks at.
size_t distance(std::string_view a, std::string_view b) {
  std::vector<size_t> before_last(b.size() + 1);
  std::vector<size_t> last(b.size() + 1);
  std::vector<size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), 0);
  for (size_t i = 1; i <= a.size(); ++i) {
    before_last.swap(last);
    last.swap(row);
    row[0] = i;
    for (size_t j = 1; j <= b.size(); ++j) {
      row[j] =
          std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1)});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
        row[j] = std::min(row[j], before_last[j - 2] + 1);
      }
    }
  }
  return row[b.size()];
}

size_t difference(size_t a, size_t b) {
  return std::max(a, b) - std::min(a, b);
}

}  // namespace

std::string nearest(std::string_view word, const std::vector<std::string>& candidates) {
  constexpr size_t kLongestWord = 128;  // what is longer was no slip of the pen
  if (word.size() > kLongestWord) {
    return "";
  }
  std::string best;
  size_t least = std::max<size_t>(1, word.size() / 3) + 1;
  const std::string folded_word = folded(word);
  for (const std::string& candidate : candidates) {
    // So many edits it takes at the least.
    if (difference(word.size(), candidate.size()) >= least) {
      continue;
    }
    if (const size_t edits = distance(folded_word, folded(candidate)); edits < least) {
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
