// Replacing a file so that a reader sees the old text or the new one, never a part.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace kova_host {

// Replaces `file`, or the file that a symbolic link leads to, with `text`, mode 0644. Throws
// OutputError; then the old file stands as it was and nothing is left beside it.
void replace_file(const std::filesystem::path& file, std::string_view text);

}  // namespace kova_host
