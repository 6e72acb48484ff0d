// The exported functions: the description is loaded once, calls are answered one after the other,
// and no exception gets out.
#include <pthread.h>

#include <cstdlib>
#include <mutex>
#include <new>

#include "simulator/agent_stderr.h"
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

// Held by whoever loads the machine or calls it.
std::mutex one_at_a_time;

// A child that is forked while another thread has the lock would wait for ever for that thread,
// which it has not got. The handlers go when this library is unloaded.
__attribute__((constructor)) void watch_forks() {
  const auto unlock = [] { one_at_a_time.unlock(); };
  static_cast<void>(pthread_atfork([] { one_at_a_time.lock(); }, unlock, unlock));
}

// One call's hold on the machine.
class Call {
 public:
  // Null if there is none.
  Machine* machine() { return library_.machine ? &*library_.machine : nullptr; }

  // The same, after the reason has been told.
  Machine* machine_or_complaint() {
    if (machine() == nullptr && !library_.error_is_told) {
      library_.error_is_told = true;
      tell_on_stderr("libKOVADeviceSim", library_.error.c_str());
    }
    return machine();
  }

  // Null if there is a machine; the caller tells the reason then.
  const char* take_error() {
    library_.error_is_told = true;
    return machine() != nullptr ? nullptr : library_.error.c_str();
  }

 private:
  const std::lock_guard<std::mutex> lock_{one_at_a_time};
  Library& library_ = library();
};

}  // namespace
}  // namespace kova_sim

KOVA_SIM_EXPORT uint32_t KovaDeviceGetValue(uint32_t code, uint32_t* value) try {
  kova_sim::Call call;
  kova_sim::Machine* machine = call.machine_or_complaint();
  if (machine == nullptr) {
    return SIM_STATUS_BAD_DESCRIPTION;
  }
  return value == nullptr ? SIM_STATUS_NULL_POINTER : machine->read(code, value);
} catch (...) {
  return SIM_STATUS_INTERNAL;
}

KOVA_SIM_EXPORT uint32_t KovaDeviceSetValue(uint32_t code, uint32_t value) try {
  kova_sim::Call call;
  kova_sim::Machine* machine = call.machine_or_complaint();
  return machine == nullptr ? SIM_STATUS_BAD_DESCRIPTION : machine->write(code, value);
} catch (...) {
  return SIM_STATUS_INTERNAL;
}

KOVA_SIM_EXPORT const char* KovaSimulatorError(void) {
  return kova_sim::Call().take_error();
}

KOVA_SIM_EXPORT void KovaSimulatorSetTime(uint64_t milliseconds) {
  kova_sim::Call call;
  if (kova_sim::Machine* machine = call.machine_or_complaint()) {
    machine->set_time(milliseconds);
  }
}

KOVA_SIM_EXPORT uint64_t KovaSimulatorRecordedTime(void) {
  kova_sim::Call call;
  const kova_sim::Machine* machine = call.machine();
  return machine == nullptr ? 0 : machine->recorded_ms();
}

KOVA_SIM_EXPORT void KovaSimulatorTellMoments(void (*tell)(void*, uint32_t, uint64_t),
                                              void* context) {
  kova_sim::Call call;
  if (const kova_sim::Machine* machine = call.machine()) {
    machine->visit_moments(
        [&](uint32_t code, uint64_t milliseconds) { tell(context, code, milliseconds); });
  }
}

KOVA_SIM_EXPORT uint32_t KovaSimulatorIsRedacted(uint32_t code) {
  kova_sim::Call call;
  const kova_sim::Machine* machine = call.machine();
  return machine != nullptr && machine->is_redacted(code) ? 1 : 0;
}
