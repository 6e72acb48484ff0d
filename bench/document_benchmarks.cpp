// A whole life of the module, from the start to the shutdown, on machines of growing size, beside
// the time that jansson takes to parse and release the same document.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <memory>

#include "bench/allocation_count.h"
#include "bench/instant_device.h"
#include "framework/json_owner.h"
#include "include/kova_iot.h"

namespace {

// Starts the module, hands the document to the host and shuts down.
JsonOwner document() {
  JsonOwner target(json_object());
  KovaIoTInitialize();
  KovaIoTGetMDCapability(target.get());
  KovaIoTUninitialize();
  return target;
}

void become_machine(const benchmark::State& state) {
  instant_device::become_machine(static_cast<unsigned int>(state.range(0)),
                                 static_cast<unsigned int>(state.range(1)));
}

void module_life(benchmark::State& state) {
  become_machine(state);
  document();  // what only a first start costs
  measure(state, document);
  if (json_object_size(document().get()) < 6) {
    state.SkipWithError("a family is missing in the document");
  }
}

void parsed_document(benchmark::State& state) {
  std::unique_ptr<char, decltype(&std::free)> text(nullptr, &std::free);
  become_machine(state);
  text.reset(json_dumps(document().get(), JSON_COMPACT));
  measure(state, [&] { return JsonOwner(json_loads(text.get(), 0, nullptr)); });
}

// Memory modules, then ports.
BENCHMARK(module_life)
    ->Args({2, 8})
    ->Args({1, 8})
    ->Args({4, 8})
    ->Args({8, 8})
    ->Args({16, 8})
    ->Args({2, 0})
    ->Args({2, 4});
BENCHMARK(parsed_document)->Args({2, 8})->Args({16, 8});

}  // namespace
