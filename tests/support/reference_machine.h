// The reference machine of tests/data: six families, with the document they must make.
#pragma once

#include <string>

#include "framework/json_owner.h"
#include "tests/support/device_double.h"

/// Answers every code that the reference machine describes.
void load_reference_machine(DeviceDouble* device);

/// The document of the reference machine, worked out by hand; every "bt" is 0.
JsonOwner reference_document();

/// Sets every "bt" of a document to 0.
void clear_base_times(json_t* document);

/// The first line in which two documents differ, or "" when they are the same to the byte.
std::string first_difference(const json_t* made, const json_t* expected);
