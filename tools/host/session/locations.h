// Where a host program looks for the module, the simulated device library and machine descriptions.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace kova_host {

// A file for dlopen: beside the installed program, in the build tree around it, or else the plain
// name, for the dynamic linker to search.
std::filesystem::path module_library();
std::filesystem::path simulator_library();
std::filesystem::path recorder_library();
std::filesystem::path guard_library();

// `name` is a file, or the name without suffix of a description that is shipped, such as
// "sixteen-modules". machine_description throws HostError (usage)
// if there is neither.
bool is_machine_description(const std::string& name);
std::filesystem::path machine_description(const std::string& name);

// The names of the shipped descriptions, sorted.
std::vector<std::string> shipped_machines();

}  // namespace kova_host
