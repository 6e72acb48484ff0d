# Run when items.json has changed: writes its text into a source file.
file(READ ${file} content)
file(WRITE ${source} "// Made of items.json.
#include <string_view>

namespace kova_host {

extern const std::string_view kItemsJson;
const std::string_view kItemsJson = R\"json(${content})json\";

}  // namespace kova_host
")
