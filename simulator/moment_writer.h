// Recorded calls as the text of a recording, the counterpart of the trace parser. Needs nothing
// but the standard library.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "simulator/trace.h"

namespace kova_sim {

/// A call as it is written down. `answer.from_call` is 0 where the place in the text says it: the
/// first answer of a code at its moment, or the one for the call right after the last answer.
struct RecordedCall {
  std::uint64_t ms = 0;
  std::uint32_t code = 0;
  bool is_write = false;  // then the word is what was written
  Answer answer;
};

/// The elements of a recording's array of moments, one a line, without a comma after the last;
/// "" without calls. They have to be in order of time.
std::string moments_text(const std::vector<RecordedCall>& calls);

/// Whole milliseconds as a JSON number of seconds: 61500 is "61.500".
std::string seconds_text(std::uint64_t ms);

}  // namespace kova_sim
