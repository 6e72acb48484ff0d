// Machine descriptions that come with the library, by name.
#pragma once

#include <string>

namespace kova_sim {

/// `name` as it is if there is such a file, or if it cannot be the name of a shipped description;
/// otherwise the file of the description so called, as "sixteen-modules", beside the library.
std::string description_file(const std::string& name);

}  // namespace kova_sim
