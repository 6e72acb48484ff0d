// A recording that is walked through, at the host's own pace.
#include "tools/host/record/replay.h"

#include <dlfcn.h>
#include <fmt/format.h>

#include <ctime>
#include <map>
#include <string_view>
#include <utility>

#include "tools/host/session/locations.h"
#include "tools/host/system/errors.h"
#include "tools/host/system/json_ptr.h"
#include "tools/host/system/loaded_library.h"
#include "tools/host/system/regular_file.h"
#include "tools/host/system/unix_time.h"

namespace kova_host {
namespace {

std::string note_of(const json_t* description) {
  const char* note = json_string_value(json_object_get(description, "note"));
  return note == nullptr ? "" : note;
}

// As the recorder writes it, with nothing put to it.
bool has_only_a_trace(json_t* description) {
  const char* key = nullptr;
  json_t* value = nullptr;
  json_object_foreach(description, key, value) {
    const std::string_view name = key;
    if (name != "note" && name != "trace" && name != "redacted") {
      return false;
    }
  }
  return true;
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
  tell_moments_ =
      simulator.entry<void(void (*)(void*, uint32_t, uint64_t), void*)>("KovaSimulatorTellMoments");
  const std::string text = read_regular_file(file);
  const JsonPtr description(json_loadb(text.data(), text.size(), 0, nullptr));
  note_ = note_of(description.get());
  is_pure_ = has_only_a_trace(description.get());
  begin_ = recorded_at(note_);
  set_time_(0);
}

std::vector<Replay::Moment> Replay::moments() const {
  struct Collected {
    const int64_t length;
    std::map<int64_t, std::vector<uint32_t>> codes;
  } collected{length_.count(), {}};
  tell_moments_(
      [](void* context, uint32_t code, uint64_t milliseconds) {
        auto& [length, codes] = *static_cast<Collected*>(context);
        // What is answered from the very end on is no part of it.
        if (const auto time = static_cast<int64_t>(milliseconds); time >= 0 && time < length) {
          codes[time].push_back(code);
        }
      },
      &collected);
  std::vector<Moment> result;
  for (auto& [time, codes] : collected.codes) {
    result.push_back({std::chrono::milliseconds(time), std::move(codes)});
  }
  return result;
}

void Replay::set_time(std::chrono::milliseconds time) const {
  set_time_(static_cast<uint64_t>(time.count()));
}

}  // namespace kova_host
