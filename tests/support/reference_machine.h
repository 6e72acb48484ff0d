// The reference machine of tests/data as a device: its families answer from the double.
#pragma once

#include "tests/support/device_double.h"

/// Answers every code that the reference machine describes.
void load_reference_machine(DeviceDouble* device);
