// Whose files a recording may use, in folders in which anybody may make some.
#pragma once

#include <sys/types.h>

#include <string>

namespace kova_recorder {

/// Where a file of this name is written: what its symbolic links lead to, if it has any. As the
/// kernel has it for links that it follows itself, one in a sticky folder that anybody may write to
/// counts only if it is the caller's or the folder owner's; or else RecordingError.
std::string without_links(const std::string& file);

/// True if there is such a file, of the caller's, of root's, or of whom the folder belongs to.
bool is_request(const std::string& file);

/// Takes the owner and the mode of the file that is to be replaced, if it is not a stranger's in
/// such a folder; without one the mode is what `mask`, a umask, leaves.
void take_over_mode(int descriptor, const std::string& replaced, mode_t mask);

/// The process's umask, or the strictest if the system does not tell.
mode_t current_umask();

}  // namespace kova_recorder
