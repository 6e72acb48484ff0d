// The exported functions: the description is loaded once, and no exception gets out.
#include <cstdio>
#include <cstdlib>
#include <new>

#include "simulator/description.h"
#include "simulator/kova_device_sim.h"
#include "simulator/shipped_machine.h"

#define KOVA_SIM_EXPORT extern "C" __attribute__((visibility("default")))

namespace kova_sim {
namespace {

struct Library {
  std::optional<Machine> machine;
  std::string error;
  bool error_is_told = false;
};

// A failed load is remembered like a good one: the same machine, or none, for the whole life.
Library load_library() noexcept {
  Library library;
  try {
    const char* machine = std::getenv("KOVA_SIM_MACHINE");
    ParseResult result = load_description(description_file(machine == nullptr ? "" : machine));
    if (result.machine) {
      library.machine.emplace(std::move(*result.machine));
    }
    library.error = std::move(result.error);
  } catch (...) {
    library.error = "out of memory";  // short enough to need none
  }
  return library;
}

Library& library() {
  static Library instance = load_library();
  return instance;
}

// The machine, or null after the reason has been told.
Machine* machine() {
  Library& loaded = library();
  if (loaded.machine) {
    return &*loaded.machine;
  }
  if (!loaded.error_is_told) {
    loaded.error_is_told = true;
    std::fprintf(stderr, "libKOVADeviceSim: %s\n", loaded.error.c_str());
  }
  return nullptr;
}

}  // namespace
}  // namespace kova_sim

KOVA_SIM_EXPORT uint32_t KovaDeviceGetValue(uint32_t code, uint32_t* value) try {
  kova_sim::Machine* machine = kova_sim::machine();
  if (machine == nullptr) {
    return SIM_STATUS_BAD_DESCRIPTION;
  }
  return value == nullptr ? SIM_STATUS_NULL_POINTER : machine->read(code, value);
} catch (...) {
  return SIM_STATUS_INTERNAL;
}

KOVA_SIM_EXPORT uint32_t KovaDeviceSetValue(uint32_t code, uint32_t value) try {
  kova_sim::Machine* machine = kova_sim::machine();
  return machine == nullptr ? SIM_STATUS_BAD_DESCRIPTION : machine->write(code, value);
} catch (...) {
  return SIM_STATUS_INTERNAL;
}

KOVA_SIM_EXPORT const char* KovaSimulatorError(void) {
  kova_sim::Library& loaded = kova_sim::library();
  loaded.error_is_told = true;
  return loaded.machine ? nullptr : loaded.error.c_str();
}

KOVA_SIM_EXPORT void KovaSimulatorSetTime(uint64_t milliseconds) {
  if (kova_sim::Machine* machine = kova_sim::machine()) {
    machine->set_time(milliseconds);
  }
}

KOVA_SIM_EXPORT uint64_t KovaSimulatorRecordedTime(void) {
  const kova_sim::Library& loaded = kova_sim::library();
  return loaded.machine ? loaded.machine->recorded_ms() : 0;
}
