// The folder and the name that a path leads to, found step by step, so that nobody can change the
// way between a look at it and its use.
#pragma once

#include <sys/stat.h>

#include <filesystem>
#include <string>

namespace kova_host {

// A descriptor that is closed when it goes.
class OwnedDescriptor {
 public:
  explicit OwnedDescriptor(int descriptor = -1) : descriptor_(descriptor) {}
  ~OwnedDescriptor();
  OwnedDescriptor(OwnedDescriptor&& other) noexcept : descriptor_(other.release()) {}
  OwnedDescriptor& operator=(OwnedDescriptor&& other) noexcept;

  int get() const { return descriptor_; }
  int release();

 private:
  int descriptor_;
};

struct FilePlace {
  OwnedDescriptor folder;  // open for looking names up
  std::string name;        // in it: what stands there is no symbolic link, or nothing
};

// Follows the symbolic links of `file`, the last one too, whether or not its target exists; but
// none that is_strangers() is true of. Throws OutputError, "cannot write FILE: ...".
FilePlace find_place(const std::filesystem::path& file);

}  // namespace kova_host
