// Which release a module's file is of.
#pragma once

#include <string>

namespace kova_host {

// ", release 0.2.0"; "" for a file that cannot be read or does not say, as before 0.3.0. The file
// is not loaded: what it holds may be anybody's.
std::string release_text(const std::string& module_file);

}  // namespace kova_host
