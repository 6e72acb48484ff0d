// The device library that the module has loaded, asked directly. For what the module does not
// tell: presence codes, counts, and which code it is that fails.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kova_host {

// Where the module looks for the device library, in this order.
inline constexpr std::array<const char*, 2> kDeviceLibraryFiles = {"/usr/lib/libKOVADevice.so",
                                                                   "/usr/lib64/libKOVADevice.so"};

inline constexpr const char* kReadEntry = "KovaDeviceGetValue";
inline constexpr const char* kWriteEntry = "KovaDeviceSetValue";

// What the library answered: a status, 0 for success, and the word.
struct DeviceAnswer {
  uint32_t status = 0;
  uint32_t word = 0;
};

// The file behind a handle of dlopen, and behind the guard where one stands before it.
std::string file_of_device_library(void* handle);

class DirectDevice {
 public:
  // Refuses to go on where another library than these is in the process under the device library's
  // name, preloaded say: the module finds the first, whatever is loaded later. Throws HostError
  // (usage), "cannot `verb`: ...", with what to do.
  static void require_none_but(std::initializer_list<std::filesystem::path> libraries,
                               std::string_view verb, std::string_view advice);

  // The library if it is in the process with its read entry, as it is after a start of the module.
  static std::optional<DirectDevice> in_process();

  // True if the library tells that it has a blank for what this code holds: a recording, replayed,
  // whose private words were left out.
  bool is_redacted(uint32_t code) const { return redacted_ != nullptr && redacted_(code) != 0; }

  // One read at a time, and none while the module is at work, as with the module's own.
  DeviceAnswer read(uint32_t code) const;

 private:
  using ReadEntry = uint32_t(uint32_t, uint32_t*);
  using RedactedEntry = uint32_t(uint32_t);
  DirectDevice(ReadEntry* get, RedactedEntry* redacted) : read_(get), redacted_(redacted) {}

  ReadEntry* read_;
  RedactedEntry* redacted_;  // null for a library without it
};

}  // namespace kova_host
