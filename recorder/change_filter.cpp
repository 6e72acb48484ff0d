// What of all the calls has to be written down.
#include "recorder/change_filter.h"

#include <algorithm>

namespace kova_recorder {

using kova_sim::Answer;
using kova_sim::RecordedCall;

ChangeFilter::Code& ChangeFilter::entry(std::uint32_t code) {
  const auto [place, is_new] = codes_.try_emplace(code);
  if (is_new) {
    place->second.is_redacted =
        std::any_of(redacted_.begin(), redacted_.end(),
                    [code](const kova_sim::CodeRun& run) { return run.contains(code); });
  }
  return place->second;
}

std::optional<RecordedCall> ChangeFilter::read(std::uint64_t ms, std::uint32_t code,
                                               Answer answer) {
  Code& known = entry(code);
  if (known.is_redacted && answer.word) {
    answer.word = 0;
  }
  // At a moment of its own a replay would start over with the several answers of the one before.
  bool is_news = known.ms == UINT64_MAX;
  if (known.ms != ms) {
    is_news = is_news || known.had_several;
    known.ms = ms;
    known.calls = 0;
    known.next_call = 1;
    known.had_several = false;
  }
  known.calls += known.calls < UINT32_MAX ? 1 : 0;
  if (!is_news && answer.status == known.last.status && answer.word == known.last.word) {
    return std::nullopt;
  }
  known.last = answer;
  known.had_several = known.calls > 1;
  answer.from_call = known.calls == known.next_call ? 0 : known.calls;
  known.next_call = known.calls + 1;
  return RecordedCall{.ms = ms, .code = code, .is_write = false, .answer = answer};
}

RecordedCall ChangeFilter::write(std::uint64_t ms, std::uint32_t code, std::uint32_t word,
                                 std::uint32_t status) {
  const std::uint32_t shown = entry(code).is_redacted ? 0 : word;
  return {.ms = ms,
          .code = code,
          .is_write = true,
          .answer = {.status = status, .word = shown, .from_call = 0}};
}

}  // namespace kova_recorder
