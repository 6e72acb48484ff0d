// Module status codes: what every operation that can fail returns.
//
// The names are spelled token for token as in the header that hosts compile against; the entry
// points see both, and a value that differed would not compile there.
#pragma once

#include <cstdint>

using Status = std::uint32_t;

#define IOT_STATUS_SUCCESS UINT32_C(0x00000000)
#define IOT_STATUS_NOT_READY UINT32_C(0xFFFFF0FF)
#define IOT_STATUS_NOT_FOUND UINT32_C(0xFFFFFBFF)
#define IOT_STATUS_UNSUPPORTED UINT32_C(0xFFFFFCFF)
#define IOT_STATUS_READ_FAILED UINT32_C(0xFFFFFAFF)
#define IOT_STATUS_WRITE_FAILED UINT32_C(0xFFFFFAFE)
#define IOT_STATUS_INVALID_PARAMETER UINT32_C(0xFFFFF8FF)
#define IOT_STATUS_JSON_ERROR UINT32_C(0xFFFFF8FE)
#define IOT_STATUS_UNDEFINED_ITEM UINT32_C(0xFFFFFEFF)
