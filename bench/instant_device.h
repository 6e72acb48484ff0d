// A device library that answers at once from a hashed table, so that what a benchmark measures is
// the module. The program that links it is the device library: see the .cpp.
#pragma once

#include <cstdint>

extern "C" {
std::uint32_t KovaDeviceGetValue(std::uint32_t code, std::uint32_t* value);
std::uint32_t KovaDeviceSetValue(std::uint32_t code, std::uint32_t value);
}

namespace instant_device {

/// Device calls while counting, reads and writes alike. Off while time is taken: a count in memory
/// costs as much as the answer.
extern bool counting;
extern std::uint64_t calls;

/// Becomes the reference machine with 1 to 16 memory modules and 0, 4 or 8 PoE ports: answers the
/// codes that the machine describes and takes every write, without effect.
void become_machine(unsigned int memory_modules, unsigned int ports);

}  // namespace instant_device
