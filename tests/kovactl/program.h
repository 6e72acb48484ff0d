// Runs the built kovactl, with its output in pipes or on a terminal of its own.
#pragma once

#include <jansson.h>
#include <sys/types.h>

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

struct Result {
  int exit_code = -1;  // -1 if a signal ended the program
  std::string out;
  std::string err;
};

using Arguments = std::vector<std::string>;

// `arguments` split at blanks; `environment` is added to the test's own.
Result run(std::string_view arguments, const std::map<std::string, std::string>& environment = {});
Result run(const Arguments& arguments, const std::map<std::string, std::string>& environment = {});

// The program on a pseudo-terminal for stdout and stderr, 10 rows high.
class TerminalRun {
 public:
  explicit TerminalRun(const Arguments& arguments,
                       const std::map<std::string, std::string>& environment = {});
  ~TerminalRun();
  TerminalRun(const TerminalRun&) = delete;
  TerminalRun& operator=(const TerminalRun&) = delete;

  // Reads until `text` has been seen since the start; false if the program ends before.
  bool wait_for(std::string_view text);
  void interrupt() const;
  // Reads the rest and gives the exit code.
  int finish();
  const std::string& screen() const { return screen_; }

 private:
  bool read_some();

  pid_t child_ = -1;
  int terminal_ = -1;
  std::string screen_;
};

struct JsonDeleter {
  void operator()(json_t* value) const { json_decref(value); }
};
using Json = std::unique_ptr<json_t, JsonDeleter>;

// Null, and a failed test, if the text is not one JSON value and nothing else.
Json parse_json(const std::string& text);

// A folder that goes with its contents.
class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }
  // Writes a file into the folder and gives its path.
  std::string file(const std::string& name, std::string_view text) const;

 private:
  std::filesystem::path path_;
};

std::string file_text(const std::filesystem::path& file);
