// The module's status codes in words.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace kova_host {

// The name in kova_iot.h, such as "IOT_STATUS_READ_FAILED"; "" for a device library's own code.
std::string_view status_name(uint32_t status);

// "0xFFFFFAFF", "0x5".
std::string status_code(uint32_t status);

// Why a read, or a write, came to nothing, with the code: "the device did not answer (0x5)".
std::string read_failure(uint32_t status);
std::string write_failure(uint32_t status);

// For anything else: "IOT_STATUS_NOT_READY (0xFFFFF0FF)", "device library code 0x5".
std::string describe_status(uint32_t status);

}  // namespace kova_host
