// Any bytes as a machine description; an accepted machine must answer every one of its codes, and
// none takes more memory than a description may.
#include <sanitizer/allocator_interface.h>

#include <algorithm>

#include "simulator/description.h"
#include "simulator/device_code.h"
#include "tests/fuzz/fuzz_device.h"

namespace {

// What is allocated now, and was at most.
std::size_t allocated = 0;
std::size_t peak = 0;

void count_allocation(const volatile void* /*memory*/, std::size_t size) {
  allocated += size;
  peak = std::max(peak, allocated);
}

void count_release(const volatile void* memory) {
  if (memory != nullptr) {
    allocated -= __sanitizer_get_allocated_size(memory);
  }
}

// Descriptions may tell calls to take their time, which a fuzzer has not got.
kova_sim::MachineDescription without_delays(kova_sim::MachineDescription machine) {
  machine.bus.delay_us = 0;
  for (auto& [code, item] : machine.items) {
    item.delay_us = 0;
  }
  return machine;
}

void use(const kova_sim::MachineDescription& description) {
  constexpr int kCodes = 64;
  kova_sim::Machine machine(without_delays(description));
  int used = 0;
  for (const auto& [code, item] : description.items) {
    std::uint32_t word = 0xA5A5A5A5;
    const std::uint32_t status = machine.read(code, &word);
    FUZZ_EXPECT(item.value || status != 0);
    machine.write(code, word);
    if (++used == kCodes) {
      return;
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const int hooks =
      __sanitizer_install_malloc_and_free_hooks(count_allocation, count_release);
  FUZZ_EXPECT(hooks != 0);
  const std::string text(reinterpret_cast<const char*>(data), size);
  const std::size_t before = peak = allocated;
  // Whatever file a description builds on, it is this one: that must end, too.
  const auto reader = [&text](const std::string& /*path*/) { return text; };
  const kova_sim::ParseResult result = kova_sim::parse_description(text, "fuzz.json", reader);
  FUZZ_EXPECT(peak - before <= kova_sim::MAX_MEMORY);
  FUZZ_EXPECT(result.machine.has_value() == result.error.empty());
  FUZZ_EXPECT(result.error.find('\n') == std::string::npos);
  if (result.machine) {
    use(*result.machine);
  }
  return 0;
}
