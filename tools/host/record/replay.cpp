// A recording that is walked through, at the host's own pace.
#include "tools/host/record/replay.h"

#include <dlfcn.h>
#include <fmt/format.h>

#include <ctime>

#include "tools/host/session/locations.h"
#include "tools/host/system/errors.h"
#include "tools/host/system/json_ptr.h"
#include "tools/host/system/loaded_library.h"
#include "tools/host/system/unix_time.h"

namespace kova_host {
namespace {

std::string note_of(const std::string& file) {
  json_error_t error;
  const JsonPtr description(json_load_file(file.c_str(), 0, &error));
  const char* note = json_string_value(json_object_get(description.get(), "note"));
  return note == nullptr ? "" : note;
}

// The recorder's note begins so.
double recorded_at(const std::string& note) {
  std::tm time = {};
  if (strptime(note.c_str(), "Recorded %Y-%m-%d %H:%M:%S UTC", &time) == nullptr) {
    return unix_time();
  }
  return static_cast<double>(timegm(&time));
}

}  // namespace

Replay::Replay(const HostOptions& options) {
  const std::string file = machine_description(options.machine.value_or(""));
  // It is in the process already; this gives its handle.
  const LoadedLibrary simulator(simulator_library(), RTLD_NOW | RTLD_NOLOAD,
                                "the simulated device library");
  set_time_ = simulator.entry<void(uint64_t)>("KovaSimulatorSetTime");
  length_ = std::chrono::milliseconds(simulator.entry<uint64_t()>("KovaSimulatorRecordedTime")());
  if (length_ == std::chrono::milliseconds(0)) {
    throw HostError(
        Fault::usage,
        fmt::format("'{}' is no recording; --simulate reads from other machine descriptions",
                    file));
  }
  note_ = note_of(file);
  begin_ = recorded_at(note_);
  set_time_(0);
}

void Replay::set_time(std::chrono::milliseconds time) const {
  set_time_(static_cast<uint64_t>(time.count()));
}

}  // namespace kova_host
