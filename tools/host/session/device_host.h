// Where module and device library live, and all that is asked of them: this process (local_host.h)
// or a worker (worker_host.h).
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "tools/host/model/item.h"
#include "tools/host/session/diagnosis.h"
#include "tools/host/session/direct_device.h"
#include "tools/host/system/json_ptr.h"
#include "tools/host/system/typed_number.h"

namespace kova_host {

struct HostOptions {
  std::string module;                  // path of the module; "" searches for it
  bool simulate = false;               // use the simulated device library
  std::optional<std::string> machine;  // description for it; without one it picks its own
};

// What the recording stand-in is to do, if it is to stand before the device library.
struct RecordingPlan {
  std::filesystem::path file;
  std::string private_codes;  // whose words are recorded as 0; "" for none
};

struct Loading {
  HostOptions host;
  std::optional<RecordingPlan> recording = {};
  bool replay = false;  // the machine is a recording, whose clock stands until it is set
};

struct Loaded {
  std::string module_file;
  uint64_t recorded_ms = 0;  // of a replay
};

struct Document {
  uint32_t status = 0;
  JsonPtr document;  // an object; null unless the status is success
};

// A read: the kind of value that the module is handed to fill. Without one it gets a null, which it
// leaves alone, for the status.
struct ItemQuestion {
  uint32_t id = 0;
  std::optional<ValueKind> kind;
};

// What the module has filled in; nothing where it has left the value alone, whatever the status.
using ItemValue = std::variant<std::monostate, int64_t, double, std::string>;

struct ItemAnswer {
  uint32_t status = 0;
  ItemValue value = {};
  std::string reason = {};  // why there is no answer of the module's at all: "" if there is one
};

// A code that a recording answers anew, so long after its beginning.
struct RecordedCode {
  uint32_t code = 0;
  uint64_t milliseconds = 0;
};

// Calls must not overlap. What a worker does not survive is a HostError, but for reads of items.
class DeviceHost {
 public:
  DeviceHost() = default;
  virtual ~DeviceHost() = default;
  DeviceHost(const DeviceHost&) = delete;
  DeviceHost& operator=(const DeviceHost&) = delete;

  // Brings the libraries in, once, before all else. Throws HostError: usage if one of them or the
  // machine description cannot be used, no_device if there is nothing to record.
  virtual Loaded load(const Loading& loading) = 0;

  // The module's own start, and its status; its end.
  virtual uint32_t start() = 0;
  virtual void end() = 0;
  virtual Document capability() = 0;

  // An answer for each question, in their order.
  virtual std::vector<ItemAnswer> read(std::span<const ItemQuestion> questions) = 0;
  virtual uint32_t write(uint32_t id, const Number& number) = 0;

  // Past the module: an answer for each code; nothing at all without a device library.
  virtual std::vector<DeviceAnswer> read_codes(std::span<const uint32_t> codes) = 0;
  virtual DeviceDiagnosis diagnose() = 0;
  // Those of the codes for which a recording that is replayed has a blank.
  virtual std::vector<uint32_t> redacted(std::span<const uint32_t> codes) = 0;

  // Of the recording that is replayed, in no order.
  virtual std::vector<RecordedCode> recorded_codes() = 0;
  // Of the recording that is made or replayed.
  virtual void set_time(uint64_t milliseconds) = 0;
  // Why the recording has ended early, "" if it has not.
  virtual std::string recording_trouble() = 0;
  // Puts the file into its place, or leaves the one there alone. What is wrong with it, "" for
  // nothing.
  virtual std::string end_recording(bool keep) = 0;
};

}  // namespace kova_host
