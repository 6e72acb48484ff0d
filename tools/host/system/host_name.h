// What this machine calls itself.
#pragma once

#include <string>

namespace kova_host {

// As gethostname(2) has it; "localhost" if it does not tell.
std::string host_name();

}  // namespace kova_host
