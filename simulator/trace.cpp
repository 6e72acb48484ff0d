// Looking answers up in a trace.
#include "simulator/trace.h"

#include <algorithm>

namespace kova_sim {
namespace {

// Room for a quarter more at a time: a long recording nearly fills what a description may take.
template <typename T>
void append(std::vector<T>& all, const T& one) {
  if (all.size() == all.capacity()) {
    all.reserve(all.size() + all.size() / 4 + 1);
  }
  all.push_back(one);
}

}  // namespace

bool Trace::add(std::uint64_t ms, const Answer& answer) {
  if (moments_.empty() || moments_.back().ms < ms) {
    append(moments_, {ms, answers_.size()});
  } else if (moments_.back().ms > ms || answers_.back().from_call >= answer.from_call) {
    return false;
  }
  append(answers_, answer);
  return true;
}

std::uint32_t Trace::next_call(std::uint64_t ms) const {
  return moments_.empty() || moments_.back().ms != ms ? 1 : answers_.back().from_call + 1;
}

std::size_t Trace::moment_at(std::uint64_t ms) const {
  const std::uint64_t at = period_ms_ == 0 ? ms : ms % period_ms_;
  const auto after =
      std::upper_bound(moments_.begin(), moments_.end(), at,
                       [](std::uint64_t time, const Moment& moment) { return time < moment.ms; });
  const auto index = static_cast<std::size_t>(after - moments_.begin());
  return index == 0 ? 0 : index - 1;
}

std::size_t Trace::end_of(std::size_t moment) const {
  return moment + 1 < moments_.size() ? moments_[moment + 1].begin : answers_.size();
}

const Answer& Trace::take(std::uint64_t ms, TracePosition& position) const {
  const std::size_t index = moment_at(ms);
  const std::uint64_t round = period_ms_ == 0 ? 0 : ms / period_ms_;
  const std::uint64_t moment = round * moments_.size() + index;
  if (position.moment != moment) {
    position = {moment, 0};
  }
  position.calls += position.calls < UINT32_MAX ? 1 : 0;
  const auto begin = answers_.begin() + static_cast<std::ptrdiff_t>(moments_[index].begin);
  const auto end = answers_.begin() + static_cast<std::ptrdiff_t>(end_of(index));
  const auto after = std::upper_bound(
      begin, end, position.calls,
      [](std::uint32_t call, const Answer& answer) { return call < answer.from_call; });
  // Calls before the first answer of this moment still get the last of the one before.
  return after == answers_.begin() ? *after : *(after - 1);
}

const Answer& Trace::look(std::uint64_t ms) const {
  return answers_[end_of(moment_at(ms)) - 1];
}

}  // namespace kova_sim
