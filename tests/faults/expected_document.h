// What is left of the reference document when one device call of the start fails.
#pragma once

#include <vector>

#include "framework/json_owner.h"
#include "tests/support/device_double.h"

/// The document that a start must make when the last of `calls`, the first calls of an undisturbed
/// start, fails. `stores`: it has stored the double's garbage word all the same.
JsonOwner expected_document(const std::vector<DeviceDouble::Call>& calls, bool stores);

/// A text made of words of four characters, of which word `index` (from 0) could not be read: the
/// characters before it stand there once more, or NULs, at which a JSON text ends.
std::string text_with_repeated_word(std::string text, size_t index);
