// The data of the shipped machines: what must hold for every setting and every module.
#include <gtest/gtest.h>

#include <bit>
#include <string>

#include "simulator/description.h"

namespace {

using kova_sim::Machine;

Machine shipped(const std::string& file) {
  kova_sim::ParseResult result = kova_sim::load_description(file);
  EXPECT_EQ(result.error, "");
  return Machine(result.machine ? *std::move(result.machine) : kova_sim::MachineDescription{});
}

std::uint32_t read(Machine& machine, std::uint32_t code) {
  std::uint32_t word = 0;
  EXPECT_EQ(machine.read(code, &word), 0U) << code;
  return word;
}

TEST(ShippedMachines, SettingsLieWithinTheirLimits) {
  Machine machine = shipped("");
  for (std::uint32_t n = 0; n < 11; ++n) {
    const std::uint32_t min = read(machine, 0x6B0000 + n);
    const std::uint32_t max = read(machine, 0x6C0000 + n);
    for (const std::uint32_t view : {0x690000U, 0x6D0000U}) {
      EXPECT_GE(read(machine, view + n), min) << n;
      EXPECT_LE(read(machine, view + n), max) << n;
    }
    EXPECT_EQ(machine.write(0x680000 + n, max), 0U) << n;
    EXPECT_EQ(machine.write(0x680000 + n, max + 1), 0xE0000002U) << n;
    EXPECT_EQ(read(machine, 0x690000 + n), max) << n;
  }
}

TEST(ShippedMachines, SixteenModulesHaveMakersOfOddParity) {
  Machine machine = shipped(SIMULATOR_MACHINES "sixteen-modules.json");
  for (std::uint32_t code = 0xA0000B; code < 0xA01000; code += 0x100) {
    for (const std::uint32_t word : {read(machine, code), read(machine, code + 1)}) {
      EXPECT_EQ(std::popcount(word & 0xFF00) % 2, 1) << code;
      EXPECT_EQ(std::popcount(word & 0x00FF) % 2, 1) << code;
      EXPECT_LE(word, 0xFFFFU) << code;
    }
  }
}

}  // namespace
