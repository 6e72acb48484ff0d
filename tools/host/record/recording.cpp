// Loads the recording stand-in, and tells it what to do through the environment that it reads.
#include "tools/host/record/recording.h"

#include <dlfcn.h>
#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <new>
#include <set>

#include "tools/host/model/item_data.h"
#include "tools/host/session/diagnosis.h"
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

}  // namespace

Recording::Recording(const Options& options) {
  DirectDevice::require_none_but({}, "record", "KOVA_RECORD_LIBRARY names a library to record");
  if (options.simulate) {
    set_variable("KOVA_RECORD_LIBRARY", simulator_library());
  } else if (std::getenv("KOVA_RECORD_LIBRARY") == nullptr) {
    require_device_library();
  }
  std::error_code error;
  const fs::path file = fs::weakly_canonical(options.file, error);  // what a link leads to
  set_variable("KOVA_RECORD_FILE", file_pattern(error ? options.file : file));
  if (options.redact) {
    set_variable("KOVA_RECORD_REDACT", private_codes());
  }
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

Recording::~Recording() {
  if (!is_finished_) {
    discard_();
  }
}

void Recording::set_time(std::chrono::milliseconds time) const {
  set_time_(static_cast<uint64_t>(time.count()));
}

std::optional<std::string> Recording::trouble() const {
  const char* error = error_();
  return error == nullptr ? std::nullopt : std::optional<std::string>(error);
}

std::optional<std::string> Recording::finish() {
  is_finished_ = true;
  return finish_() == 0 ? std::nullopt : trouble();
}

std::string private_codes() {
  std::set<uint32_t> codes;
  for (const FamilyData& family : item_data()) {
    for (const Item& item : family.items(family.instances ? family.instances->max : 1)) {
      if (item.facts.is_private) {
        codes.insert(item.facts.codes.begin(), item.facts.codes.end());
      }
    }
  }
  std::string text;
  for (auto at = codes.begin(); at != codes.end();) {
    const uint32_t first = *at;
    uint32_t last = first;
    while (++at != codes.end() && *at == last + 1) {
      last = *at;
    }
    text += fmt::format("{}0x{:X}..0x{:X}", text.empty() ? "" : ",", first, last);
  }
  return text;
}

}  // namespace kova_host
