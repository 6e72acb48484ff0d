// The device library that calls are forwarded to.
#pragma once

#include <cstdint>
#include <string>

namespace kova_recorder {

/// The real entries, or null both with the one-line reason.
struct RecordedLibrary {
  std::uint32_t (*get)(std::uint32_t code, std::uint32_t* value) = nullptr;
  std::uint32_t (*set)(std::uint32_t code, std::uint32_t value) = nullptr;
  std::string error;
};

/// Opens `file`, or the device library at its own places when that is empty.
RecordedLibrary open_device_library(const std::string& file);

}  // namespace kova_recorder
