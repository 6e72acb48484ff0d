// The module's library and its entry points.
#pragma once

#include <jansson.h>

#include <cstdint>
#include <filesystem>
#include <string>

namespace kova_host {

// The module in the process, not started. It stays there: values that it made may outlive it.
class Module {
 public:
  // `file` as the user gave it; "" searches for it. Throws HostError (usage) if it cannot be used.
  explicit Module(const std::string& file);

  const std::filesystem::path& file() const { return file_; }

  // The module's entry points. Calls must not overlap.
  uint32_t initialize() const { return initialize_(); }
  uint32_t uninitialize() const { return uninitialize_(); }
  uint32_t capability(json_t* target) const { return capability_(target); }
  uint32_t read(uint32_t id, json_t* value) const { return get_(id, value); }
  uint32_t write(uint32_t id, json_t* value) const { return set_(id, value); }

 private:
  std::filesystem::path file_;
  uint32_t (*initialize_)() = nullptr;
  uint32_t (*uninitialize_)() = nullptr;
  uint32_t (*capability_)(json_t*) = nullptr;
  uint32_t (*get_)(uint32_t, json_t*) = nullptr;
  uint32_t (*set_)(uint32_t, json_t*) = nullptr;
};

}  // namespace kova_host
