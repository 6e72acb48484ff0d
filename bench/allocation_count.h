// Heap allocations of this process, by operator new and by jansson.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>

/// Allocations so far.
std::uint64_t allocation_count();

/// Runs `call`, which gives a value, in the loop of a benchmark, whose counter "allocations" is
/// then the number of heap allocations a call.
template <typename Call>
void measure(benchmark::State& state, const Call& call) {
  const std::uint64_t before = allocation_count();
  for ([[maybe_unused]] auto iteration : state) {
    benchmark::DoNotOptimize(call());
  }
  state.counters["allocations"] = benchmark::Counter(
      static_cast<double>(allocation_count() - before), benchmark::Counter::kAvgIterations);
}
