// What recording costs: a call through the stand-in beside the same call without it, the size of
// an hour of the built-in machine, and the time that loading it takes.
// Usage: kova_recording_benchmarks RECORDER COUNTING_LIBRARY [benchmark options]
#include <benchmark/benchmark.h>
#include <dlfcn.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "recorder/change_filter.h"
#include "simulator/description.h"

namespace {

using ReadEntry = std::uint32_t(std::uint32_t, std::uint32_t*);

ReadEntry* entry_of(const char* library) {
  void* handle = dlopen(library, RTLD_NOW | RTLD_LOCAL);
  void* entry = handle == nullptr ? nullptr : dlsym(handle, "KovaDeviceGetValue");
  if (entry == nullptr) {
    std::fprintf(stderr, "%s\n", dlerror());
    std::exit(EXIT_FAILURE);
  }
  return reinterpret_cast<ReadEntry*>(entry);
}

void read_code(benchmark::State& state, ReadEntry* entry, std::uint32_t code) {
  std::uint32_t word = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(entry(code, &word));
  }
}

// Every described code once a second for an hour, as an agent that samples it has it.
std::string hour_of_the_builtin_machine() {
  constexpr std::uint32_t CALL_MS = 4;
  auto description = *kova_sim::load_description("").machine;
  description.clock_step_ms = CALL_MS;
  kova_sim::Machine machine(description);
  kova_recorder::ChangeFilter filter({});
  std::vector<kova_sim::RecordedCall> calls;
  for (std::uint64_t second = 0; second < 3600; ++second) {
    std::uint32_t made = 0;
    for (const auto& [code, item] : description.items) {
      kova_sim::Answer answer{.word = 0};
      answer.status = machine.read(code, &*answer.word);
      ++made;
      if (const auto call = filter.read(second * 1000, code, answer)) {
        calls.push_back(*call);
      }
    }
    for (std::uint32_t unused = 0; made < 1000 / CALL_MS; ++made) {
      machine.read(0, &unused);  // time passes
    }
  }
  return "{\"trace\": {\"moments\": [\n" + kova_sim::moments_text(calls) +
         "\n], \"seconds\": 3600}}\n";
}

void load(benchmark::State& state, const std::string& text) {
  for (auto _ : state) {
    const kova_sim::ParseResult result = kova_sim::parse_description(text, "hour.json");
    if (!result.machine) {
      state.SkipWithError(result.error.c_str());
    }
  }
  // As a label: the reporter of CSV wants a counter in every benchmark or in none.
  std::array<char, 32> size{};
  std::snprintf(size.data(), size.size(), "%.1f MB", static_cast<double>(text.size()) / 1e6);
  state.SetLabel(size.data());
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (argc != 3) {
    std::fputs("usage: kova_recording_benchmarks RECORDER COUNTING_LIBRARY\n", stderr);
    return EXIT_FAILURE;
  }
  const std::string file = "/tmp/kova-recording-benchmark." + std::to_string(getpid());
  setenv("KOVA_RECORD_FILE", file.c_str(), 1);
  setenv("KOVA_RECORD_LIBRARY", argv[2], 1);
  ReadEntry* const recorded = entry_of(argv[1]);
  ReadEntry* const direct = entry_of(argv[2]);
  const std::string hour = hour_of_the_builtin_machine();
  benchmark::RegisterBenchmark("call/direct", read_code, direct, 0);
  benchmark::RegisterBenchmark("call/recorded-same-answer", read_code, recorded, 0);
  // As many as are written in one go: a device that changes without end ends the recording.
  benchmark::RegisterBenchmark("call/recorded-new-answer", read_code, recorded, 1)
      ->Iterations(200'000);
  benchmark::RegisterBenchmark("hour/load", load, hour)->Unit(benchmark::kMillisecond);
  benchmark::RunSpecifiedBenchmarks();
  unlink((file + ".part").c_str());
  std::atexit([] { unlink(std::getenv("KOVA_RECORD_FILE")); });
  return EXIT_SUCCESS;
}
