// Machine descriptions: from JSON text to a machine, or to the reason why not. The format is
// written down in docs/machine-description.md.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "simulator/machine.h"

namespace kova_sim {

/// The description to build on by this name is the built-in machine, not a file.
inline constexpr char BUILTIN_NAME[] = "builtin";

/// The text of the built-in machine's description.
const std::string& builtin_machine_text();

/// A machine, or the one-line reason why the description is refused; never both.
struct ParseResult {
  std::optional<MachineDescription> machine;
  std::string error;
};

/// The text of the named file; throws DescriptionError when it cannot be read.
using FileReader = std::function<std::string(const std::string& path)>;
std::string read_file(const std::string& path);

/// Parses any bytes. `file` names them in messages, and is where relative paths of descriptions
/// to build on start from; those are read through `reader`. Throws nothing but std::bad_alloc.
ParseResult parse_description(const std::string& text, const std::string& file,
                              const FileReader& reader = read_file);

/// The machine in the named file, or the built-in one when the name is empty.
ParseResult load_description(const std::string& file);

}  // namespace kova_sim
