// How a described machine answers over time: signals, failures, writes, and the shipped machines.
#include "simulator/machine.h"

#include <gtest/gtest.h>

#include <bit>
#include <chrono>
#include <vector>

#include "simulator/description.h"

namespace {

using kova_sim::Machine;
using Words = std::vector<std::uint32_t>;

Machine machine_of(kova_sim::ParseResult result) {
  EXPECT_EQ(result.error, "");
  return Machine(result.machine ? *std::move(result.machine) : kova_sim::MachineDescription{});
}

Machine machine_from(const std::string& text) {
  return machine_of(kova_sim::parse_description(text, "test"));
}

Machine shipped(const char* name) {
  return machine_of(kova_sim::load_description(std::string(SIMULATOR_MACHINES) + name));
}

// The word read, or 0xBAD00000 plus the status' low half when the read fails.
std::uint32_t read(Machine& machine, std::uint32_t code) {
  std::uint32_t word = 0;
  const std::uint32_t status = machine.read(code, &word);
  return status == 0 ? word : 0xBAD00000 + (status & 0xFFFF);
}

Words read_times(Machine& machine, std::uint32_t code, int times) {
  Words words;
  for (int i = 0; i < times; ++i) {
    words.push_back(read(machine, code));
  }
  return words;
}

TEST(Machine, SignalsFollowTheStepClock) {
  struct {
    const char* source;
    Words expected;  // at 0, 1, 2, ... seconds
  } const cases[] = {
      {R"("ramp": {"from": 2, "to": 0, "per_second": 1})", {2, 1, 0, 0}},
      {R"("ramp": {"from": -1, "to": 2, "seconds": 3, "then": "hold"})", {0xFFFFFFFF, 0, 1, 2, 2}},
      {R"("ramp": {"from": 10, "to": 40, "per_second": 10, "then": "wrap"})", {10, 20, 30, 10, 20}},
      {R"("ramp": {"from": 0, "to": 4294967295, "seconds": 1})", {0, 4294967295}},
      {R"("sine": {"mean": 100, "amplitude": 50, "period_seconds": 4})", {100, 150, 100, 50, 100}},
      {R"("sine": {"mean": 0, "amplitude": 7, "period_seconds": 4})", {0, 7, 0, 0xFFFFFFF9}},
  };
  for (const auto& row : cases) {
    Machine machine = machine_from(
        std::string(R"({"clock": {"step_ms": 1000}, "codes": {"0x1": {)") + row.source + "}}}");
    EXPECT_EQ(read_times(machine, 0x1, static_cast<int>(row.expected.size())), row.expected)
        << row.source;
  }
}

TEST(Machine, EveryCallMovesTheStepClockAndNullReturnsToRealTime) {
  const std::string ramp =
      R"("codes": {"0x1": {"ramp": {"from": 0, "to": 900, "per_second": 1}}}})";
  Machine stepped = machine_from(R"({"clock": {"step_ms": 500}, )" + ramp);
  EXPECT_EQ(read(stepped, 0x2), 0xBAD00001);
  EXPECT_NE(stepped.write(0x1, 5), 0U);
  EXPECT_EQ(read(stepped, 0x1), 1U);
  Machine real = machine_from(R"({"clock": null, )" + ramp);
  EXPECT_LT(read_times(real, 0x1, 1000).back(), 600U);
}

TEST(Machine, NoiseStaysInItsBandAndRepeatsByItsSeed) {
  const auto readings = [](const std::string& seed) {
    Machine machine = machine_from(
        R"({"codes": {"0x1": {"noise": {"mean": 500, "amplitude": 20, "seed": )" + seed + "}}}}");
    return read_times(machine, 0x1, 2000);
  };
  const Words words = readings("7");
  EXPECT_EQ(words, readings("7"));
  EXPECT_NE(words, readings("8"));
  // 2000 samples over 41 values: both ends turn up, nothing lies beyond.
  EXPECT_EQ(*std::min_element(words.begin(), words.end()), 480U);
  EXPECT_EQ(*std::max_element(words.begin(), words.end()), 520U);
}

TEST(Machine, FailsOnEveryNthCall) {
  Machine machine = machine_from(R"({
    "bus": {"fail_read": {"status": 9, "every": 5}, "not_described": "0x44"},
    "codes": {"0x1": {"value": 1, "fail_read": {"status": 3, "every": 2}}, "0x2": 2,
              "0x3": {"value": 0, "write": true, "fail_write": {"status": 8, "every": 3}}}})");
  EXPECT_EQ(read_times(machine, 0x1, 5), (Words{1, 0xBAD00003, 1, 0xBAD00003, 0xBAD00009}));
  // The bus counts reads of all codes, a code counts its own; the next read of 0x1 is its sixth.
  EXPECT_EQ(read_times(machine, 0x2, 2), (Words{2, 2}));
  EXPECT_EQ(read_times(machine, 0x1, 2), (Words{0xBAD00003, 1}));
  EXPECT_EQ(read_times(machine, 0x9, 2), (Words{0xBAD00009, 0xBAD00044}));
  EXPECT_EQ(machine.write(0x3, 1), 0U);
  EXPECT_EQ(machine.write(0x3, 2), 0U);
  EXPECT_EQ(machine.write(0x3, 3), 8U);
  EXPECT_EQ(machine.write(0x9, 3), 0x44U);
  EXPECT_EQ(read(machine, 0x3), 2U);
}

TEST(Machine, AFailingReadStoresOnlyWhatIsDescribed) {
  Machine machine = machine_from(R"({"codes": {"0x1": {"value": 1, "fail_read": "0xFFFFFAFF"},
      "0x2": {"value": 1, "fail_read": {"status": 5, "stores": -2}}}})");
  std::uint32_t word = 77;
  EXPECT_EQ(machine.read(0x1, &word), 0xFFFFFAFFU);
  EXPECT_EQ(word, 77U);
  EXPECT_EQ(machine.read(0x2, &word), 5U);
  EXPECT_EQ(word, 0xFFFFFFFEU);
}

TEST(Machine, WritesChangeCodesWithinTheirLimits) {
  Machine machine = machine_from(R"({"codes": {
    "0x10..0x11": {"write": {"changes": "0x20", "min": {"code": "0x30"}, "max": {"code": "0x40"}}},
    "0x20": [50, 60], "0x30": [10, 20], "0x40": [99, 90],
    "0x50": {"value": 0, "write": {"min": -5, "max": 5, "refused": 77}},
    "0x60": {"value": 0, "write": {"changes": ["0x60", "0x40"], "min": 1}},
    "0x70": {"ramp": {"from": 9, "to": 0, "seconds": 9}, "write": true},
    "0x80": 1}})");
  constexpr std::uint32_t REFUSED = 0xE0000002;
  struct {
    std::uint32_t code, value, status, changed, word;
  } const steps[] = {
      {0x10, 10, 0, 0x20, 10},
      {0x10, 9, REFUSED, 0x20, 10},
      {0x11, 90, 0, 0x21, 90},
      {0x11, 91, REFUSED, 0x21, 90},
      {0x11, 19, REFUSED, 0x21, 90},
      {0x50, 0xFFFFFFFB, 0, 0x50, 0xFFFFFFFB},
      {0x50, 0xFFFFFFFA, 77, 0x50, 0xFFFFFFFB},
      {0x50, 6, 77, 0x50, 0xFFFFFFFB},
      // The maximum of the first setting moves, and with it what is accepted.
      {0x60, 200, 0, 0x40, 200},
      {0x10, 150, 0, 0x20, 150},
      {0x60, 0xFFFFFFFF, 0, 0x60, 0xFFFFFFFF},
      {0x60, 0, REFUSED, 0x60, 0xFFFFFFFF},
      {0x70, 4000, 0, 0x70, 4000},
      {0x80, 2, 0xE0000003, 0x80, 1},
      {0x90, 2, 0xE0000001, 0x10, 0xBAD00001},
  };
  for (const auto& step : steps) {
    EXPECT_EQ(machine.write(step.code, step.value), step.status) << step.code << " " << step.value;
    EXPECT_EQ(read(machine, step.changed), step.word) << step.code << " " << step.value;
  }
}

TEST(Machine, CopiesComeFromTheBaseAndKeepReferencesTogether) {
  Machine machine = machine_from(R"({"base": "builtin", "codes": {"0x270000": null},
      "copy": {"0x01680000": "0x00680000..0x0068000A", "0x270004": "0x270000..0x270003"}})");
  EXPECT_EQ(machine.write(0x270004, 0), 0U);
  EXPECT_EQ(read(machine, 0x270004), 0U);
  EXPECT_EQ(read(machine, 0x270000), 0xBAD00001);
  EXPECT_EQ(machine.write(0x1680000, 20), 0U);  // what it changes lies outside the copied run
  EXPECT_EQ(read(machine, 0x690000), 20U);
}

TEST(ShippedMachines, BuiltinHoldsTogether) {
  Machine machine = machine_of(kova_sim::load_description(""));
  for (const std::uint32_t presence : {0x200000, 0x400000, 0x600008, 0x800000, 0xB00000}) {
    EXPECT_EQ(read(machine, presence), 1U) << presence;
  }
  EXPECT_EQ(read(machine, 0x260003), 1U);
  EXPECT_EQ(read(machine, 0x260007), 0U);
  for (std::uint32_t n = 0; n < 11; ++n) {
    const std::uint32_t min = read(machine, 0x6B0000 + n);
    const std::uint32_t max = read(machine, 0x6C0000 + n);
    for (const std::uint32_t view : {0x690000, 0x6D0000}) {
      EXPECT_GE(read(machine, view + n), min) << n;
      EXPECT_LE(read(machine, view + n), max) << n;
    }
    EXPECT_EQ(machine.write(0x680000 + n, max), 0U) << n;
    EXPECT_EQ(machine.write(0x680000 + n, max + 1), 0xE0000002U) << n;
    EXPECT_EQ(read(machine, 0x690000 + n), max) << n;
  }
  EXPECT_EQ(machine.write(0x420001, 0xFFFFB1E0), 0U);           // -2 G
  EXPECT_EQ(machine.write(0x420001, 0xFFFFB1DF), 0xE0000002U);  // just beyond
}

TEST(ShippedMachines, TheBatteryDischarges) {
  Machine machine = machine_from(R"({"base": "builtin", "clock": {"step_ms": 3600000}})");
  EXPECT_EQ(read_times(machine, 0xB0000F, 4), (Words{3900, 2600, 1300, 3900}));
  EXPECT_EQ(read_times(machine, 0xB00012, 3), (Words{120, 60, 180}));
  const auto current = static_cast<std::int16_t>(read(machine, 0xB0000A));
  EXPECT_LT(current, -1200);
  EXPECT_GT(current, -1400);
}

TEST(ShippedMachines, SixteenModulesHaveValidMakers) {
  Machine machine = shipped("sixteen-modules.json");
  ASSERT_EQ(read(machine, 0xA00000), 16U);
  for (std::uint32_t module = 0; module < 16; ++module) {
    for (const std::uint32_t selector : {0x0B, 0x0C}) {
      const std::uint32_t word = read(machine, 0xA00000 + (module << 8) + selector);
      EXPECT_EQ(std::popcount(word & 0xFF00) % 2, 1) << module;
      EXPECT_EQ(std::popcount(word & 0x00FF) % 2, 1) << module;
      EXPECT_LE(word, 0xFFFFU);
    }
    EXPECT_NE(read(machine, 0xA00011 + (module << 8)) >> 16, 0xBAD0U) << module;
  }
  EXPECT_EQ(read(machine, 0x260007), 1U);
  EXPECT_EQ(read(machine, 0x220007), 4U);
}

TEST(ShippedMachines, OthersShowTheirFaults) {
  Machine failing = shipped("failing-reads.json");
  std::uint32_t word = 0;
  EXPECT_EQ(failing.read(0x240001, &word), 0xFFFFFAFFU);
  EXPECT_EQ(word, 65535U);
  EXPECT_EQ(read(failing, 0xA00011), 0x564C582DU);
  EXPECT_EQ(read(failing, 0xA00013), 0xBAD00005U);
  EXPECT_EQ(failing.write(0x270000, 0), 6U);
  Machine slow = shipped("slow-bus.json");
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(read(slow, 0xA00000), 16U);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(10));
}

}  // namespace
