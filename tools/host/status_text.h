// Names of the module's status codes.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace kova_host {

// The name in kova_iot.h, such as "IOT_STATUS_READ_FAILED"; "" for a device library's own code.
std::string_view status_name(uint32_t status);

// Name and number for people: "IOT_STATUS_READ_FAILED (0xFFFFFAFF)", "device library code 0x5".
std::string describe_status(uint32_t status);

}  // namespace kova_host
