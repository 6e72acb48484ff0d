// Any bytes as a machine description; an accepted machine must answer every one of its codes.
#include "simulator/description.h"
#include "tests/fuzz/fuzz_device.h"

namespace {

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
  const std::string text(reinterpret_cast<const char*>(data), size);
  // Whatever file a description builds on, it is this one: that must end, too.
  const auto reader = [&text](const std::string& /*path*/) { return text; };
  const kova_sim::ParseResult result = kova_sim::parse_description(text, "fuzz.json", reader);
  FUZZ_EXPECT(result.machine.has_value() == result.error.empty());
  FUZZ_EXPECT(result.error.find('\n') == std::string::npos);
  if (result.machine) {
    use(*result.machine);
  }
  return 0;
}
