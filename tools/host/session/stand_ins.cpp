// Loads simulator and recorder.
#include "tools/host/session/stand_ins.h"

#include <dlfcn.h>
#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <new>

#include "tools/host/session/locations.h"
#include "tools/host/system/errors.h"
#include "tools/host/system/loaded_library.h"

namespace kova_host {
namespace {

namespace fs = std::filesystem;

void set_variable(const char* name, const std::string& value) {
  if (setenv(name, value.c_str(), 1) != 0) {
    throw std::bad_alloc();
  }
}

// A percent sign in a file name is meant as one.
std::string file_pattern(const fs::path& file) {
  std::string pattern;
  for (const char character : file.native()) {
    pattern += character;
    if (character == '%') {
      pattern += character;
    }
  }
  return pattern;
}

// Without a file there is nothing that the stand-in could open, and the cause is told as ever.
// With one the stand-in has to be first, or the module would find the library itself.
void require_device_library() {
  std::error_code error;
  const bool exists = std::any_of(kDeviceLibraryFiles.begin(), kDeviceLibraryFiles.end(),
                                  [&error](const char* file) { return fs::exists(file, error); });
  if (!exists) {
    throw HostError(Fault::no_device, fmt::format("no device found: {}; --simulate records a "
                                                  "simulated machine",
                                                  cause_of_no_device(diagnose_device())));
  }
}

void prepare_recorder(const RecordingPlan& plan, bool simulate) {
  DirectDevice::require_none_but({}, "record", "KOVA_RECORD_LIBRARY names a library to record");
  if (simulate) {
    set_variable("KOVA_RECORD_LIBRARY", simulator_library());
  } else if (std::getenv("KOVA_RECORD_LIBRARY") == nullptr) {
    require_device_library();
  }
  std::error_code error;
  const fs::path file = fs::weakly_canonical(plan.file, error);  // what a link leads to
  set_variable("KOVA_RECORD_FILE", file_pattern(error ? plan.file : file));
  if (!plan.private_codes.empty()) {
    set_variable("KOVA_RECORD_REDACT", plan.private_codes);
  }
}

}  // namespace

StandIns::StandIns(const Loading& loading)
    : simulates_(loading.host.simulate), records_(loading.recording.has_value()) {
  if (simulates_) {
    if (loading.host.machine) {
      set_variable("KOVA_SIM_MACHINE", machine_description(*loading.host.machine));
    }
    library_ = simulator_library();
    // A recorder before it hands the calls on.
    if (!records_) {
      DirectDevice::require_none_but({library_, recorder_library()}, "simulate",
                                     "--simulate needs no preloading");
    }
  }
  if (loading.recording) {
    prepare_recorder(*loading.recording, simulates_);
    library_ = recorder_library();
  }
}

// The module's own dlopen of the real library finds them by their SONAME. They stay for the life
// of the process, as the real one does.
void StandIns::load() {
  if (records_) {
    load_recorder();
  }
  if (simulates_) {
    const LoadedLibrary simulator(simulator_library(), RTLD_NOW | RTLD_GLOBAL,
                                  "the simulated device library");
    const char* error = simulator.entry<const char*()>("KovaSimulatorError")();
    if (error != nullptr) {
      throw HostError(Fault::usage, error);
    }
  }
}

void StandIns::load_recorder() {
  const LoadedLibrary recorder(recorder_library(), RTLD_NOW | RTLD_GLOBAL, "the recorder");
  set_time_ = recorder.entry<void(uint64_t)>("KovaRecorderSetTime");
  error_ = recorder.entry<const char*()>("KovaRecorderError");
  finish_ = recorder.entry<uint32_t()>("KovaRecorderFinish");
  discard_ = recorder.entry<void()>("KovaRecorderDiscard");
  if (const char* reason = error_()) {
    const bool has_library = recorder.entry<uint32_t()>("KovaRecorderHasLibrary")() != 0;
    throw HostError(has_library ? Fault::usage : Fault::no_device,
                    has_library ? reason : fmt::format("no device found: {}", reason));
  }
  set_time_(0);
}

uint64_t StandIns::begin_replay(const HostOptions& options) {
  // It is in the process already; this gives its handle.
  const LoadedLibrary simulator(simulator_library(), RTLD_NOW | RTLD_NOLOAD,
                                "the simulated device library");
  set_time_ = simulator.entry<void(uint64_t)>("KovaSimulatorSetTime");
  tell_moments_ =
      simulator.entry<void(void (*)(void*, uint32_t, uint64_t), void*)>("KovaSimulatorTellMoments");
  const uint64_t length = simulator.entry<uint64_t()>("KovaSimulatorRecordedTime")();
  if (length == 0) {
    const std::string file = machine_description(options.machine.value_or(""));
    throw HostError(
        Fault::usage,
        fmt::format("'{}' is no recording; --simulate reads from other machine descriptions",
                    file));
  }
  set_time_(0);
  return length;
}

std::vector<RecordedCode> StandIns::recorded_codes() const {
  std::vector<RecordedCode> codes;
  if (tell_moments_ != nullptr) {
    tell_moments_(
        [](void* list, uint32_t code, uint64_t milliseconds) {
          static_cast<std::vector<RecordedCode>*>(list)->push_back({code, milliseconds});
        },
        &codes);
  }
  return codes;
}

void StandIns::set_time(uint64_t milliseconds) const {
  if (set_time_ != nullptr) {
    set_time_(milliseconds);
  }
}

std::string StandIns::trouble() const {
  const char* error = error_ == nullptr ? nullptr : error_();
  return error == nullptr ? "" : error;
}

std::string StandIns::end_recording(bool keep) {
  if (finish_ == nullptr) {
    return "nothing is recorded";
  }
  if (!keep) {
    discard_();
    return "";
  }
  return finish_() == 0 ? "" : trouble();
}

}  // namespace kova_host
