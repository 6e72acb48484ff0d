// The type of a status; the statuses themselves stand in the header that hosts compile against.
#pragma once

#include <cstdint>

#include "include/kova_iot.h"

using Status = std::uint32_t;
