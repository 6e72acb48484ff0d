// The live page as one file that needs nothing else.
#pragma once

#include <string>
#include <string_view>

namespace kova_page {

// The page with its styles and scripts inside, and with `report`, a JSON object of the form that
// source.js describes, in place of a connection. A security policy in the file lets a browser load
// nothing and run only these scripts, whatever texts the report holds.
std::string single_file(std::string_view report);

}  // namespace kova_page
