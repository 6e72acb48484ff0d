// A recording that is walked through, at the host's own pace.
#include "tools/host/record/replay.h"

#include <ctime>
#include <map>
#include <string_view>
#include <utility>

#include "tools/host/session/locations.h"
#include "tools/host/system/json_ptr.h"
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

Replay::Replay(std::shared_ptr<DeviceHost> host, const HostOptions& options)
    : host_(std::move(host)) {
  const std::string file = machine_description(options.machine.value_or(""));
  length_ = std::chrono::milliseconds(host_->load({options, std::nullopt, true}).recorded_ms);
  const std::string text = read_regular_file(file);
  const JsonPtr description(json_loadb(text.data(), text.size(), 0, nullptr));
  note_ = note_of(description.get());
  is_pure_ = has_only_a_trace(description.get());
  begin_ = recorded_at(note_);
}

std::vector<Replay::Moment> Replay::moments() const {
  std::map<uint64_t, std::vector<uint32_t>> codes;
  for (const RecordedCode& recorded : host_->recorded_codes()) {
    // What is answered from the very end on is no part of it.
    if (recorded.milliseconds < static_cast<uint64_t>(length_.count())) {
      codes[recorded.milliseconds].push_back(recorded.code);
    }
  }
  std::vector<Moment> result;
  result.reserve(codes.size());
  for (auto& [time, codes_then] : codes) {
    result.push_back({std::chrono::milliseconds(time), std::move(codes_then)});
  }
  return result;
}

void Replay::set_time(std::chrono::milliseconds time) const {
  host_->set_time(static_cast<uint64_t>(time.count()));
}

}  // namespace kova_host
