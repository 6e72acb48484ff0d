// Capability documents in tests: the reference machine's, and comparing them.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "framework/json_owner.h"

/// A file of tests/data; throws when it cannot be read.
JsonOwner load_test_data(const std::string& name);

/// The document of the reference machine, worked out by hand; every "bt" is 0.
JsonOwner reference_document();

/// Sets every "bt" of a document to 0.
void clear_base_times(json_t* document);

/// Calls `visit` with the ID and the element of every item that stands in a document.
void for_each_item(const json_t* json, const std::function<void(std::uint32_t, json_t*)>& visit);

/// The first line in which two documents differ, or "" when they are the same to the byte.
std::string first_difference(const json_t* made, const json_t* expected);
