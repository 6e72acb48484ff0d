// How fresh a sweep is.
#include "tools/page/snapshot.h"

#include <fmt/format.h>

#include <algorithm>

namespace kova_page {

double SweepState::pace() const {
  return std::max(interval, 2 * duration.value_or(0));
}

SweepState sweep_state(const Snapshot& snapshot, double interval,
                       std::chrono::steady_clock::time_point now) {
  constexpr double kPacesToStale = 3;
  SweepState state;
  state.number = snapshot.number;
  state.list = snapshot.list->number;
  state.interval = interval;
  state.error = snapshot.error;
  state.trouble = snapshot.trouble;
  if (snapshot.number == 0) {
    if (state.error.empty()) {
      state.error = "the first sweep has not ended yet";
    }
    return state;
  }
  const double age = std::chrono::duration<double>(now - snapshot.ended).count();
  state.time = snapshot.time;
  state.age = age;
  state.duration = snapshot.duration;
  if (state.error.empty() && age > kPacesToStale * state.pace()) {
    state.error = fmt::format("the device has not answered for {:.0f} s", age);
  }
  state.up = state.error.empty();
  return state;
}

}  // namespace kova_page
