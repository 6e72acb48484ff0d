// Replacing a file so that a reader sees the old text or the new one, never a part.
#pragma once

#include <sys/stat.h>

#include <filesystem>
#include <string_view>

namespace kova_host {

// Replaces `file`, or the file that a symbolic link leads to, with `text`. A file that was there
// keeps its mode and owner; a new one has what the umask leaves of 0666. What a killed run left
// beside it goes. Throws OutputError; then the old file stands as it was and nothing is left.
// A folder that everybody may write to and where files are their owners' (/tmp) is no place for a
// stranger to redirect the caller: there a link, or a file to be replaced, counts only if it
// belongs to the caller or to the folder's owner.
void replace_file(const std::filesystem::path& file, std::string_view text);

// Throws as replace_file() would before it writes, for work that is long and ends in a file.
void require_replaceable(const std::filesystem::path& file);

// The rule for such folders: true if what `owner` has put into `folder` is not to be used by
// `caller`. Linux has the same in fs.protected_symlinks and fs.protected_regular.
bool is_strangers(const struct stat& folder, uid_t owner, uid_t caller);

}  // namespace kova_host
