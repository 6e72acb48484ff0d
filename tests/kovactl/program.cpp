// Runs the built kovactl, with its output in pipes or on a terminal of its own.
#include "program.h"

#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace {

// In the child: never returns.
void become(const Arguments& arguments, const std::map<std::string, std::string>& environment) {
  std::vector<char*> argv = {const_cast<char*>(KOVACTL_PROGRAM)};
  for (const std::string& argument : arguments) {
    argv.push_back(const_cast<char*>(argument.c_str()));
  }
  argv.push_back(nullptr);
  for (const auto& [name, value] : environment) {
    setenv(name.c_str(), value.c_str(), 1);
  }
  execv(argv[0], argv.data());
  _exit(127);
}

int exit_code_of(pid_t child) {
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace

Result run(std::string_view arguments, const std::map<std::string, std::string>& environment) {
  std::istringstream stream{std::string(arguments)};
  Arguments words;
  for (std::string word; stream >> word;) {
    words.push_back(word);
  }
  return run(words, environment);
}

Result run(const Arguments& arguments, const std::map<std::string, std::string>& environment) {
  // Files rather than pipes: no output can block the program while the other stream is read.
  std::FILE* out = std::tmpfile();
  std::FILE* err = std::tmpfile();
  const pid_t child = fork();
  if (child == 0) {
    dup2(fileno(out), STDOUT_FILENO);
    dup2(fileno(err), STDERR_FILENO);
    become(arguments, environment);
  }
  Result result;
  result.exit_code = exit_code_of(child);
  for (const auto& [file, text] : {std::pair(out, &result.out), std::pair(err, &result.err)}) {
    std::rewind(file);
    std::array<char, 4096> buffer{};
    while (const size_t count = std::fread(buffer.data(), 1, buffer.size(), file)) {
      text->append(buffer.data(), count);
    }
    (void)std::fclose(file);
  }
  return result;
}

TerminalRun::TerminalRun(const Arguments& arguments,
                         const std::map<std::string, std::string>& environment) {
  const winsize size{.ws_row = 10, .ws_col = 80, .ws_xpixel = 0, .ws_ypixel = 0};
  child_ = forkpty(&terminal_, nullptr, nullptr, &size);
  if (child_ == 0) {
    become(arguments, environment);
  }
}

TerminalRun::~TerminalRun() {
  if (child_ > 0) {
    kill(child_, SIGKILL);
    exit_code_of(child_);
  }
  close(terminal_);
}

bool TerminalRun::read_some() {
  std::array<char, 4096> buffer{};
  const ssize_t count = read(terminal_, buffer.data(), buffer.size());
  if (count <= 0) {
    return false;  // the program has ended
  }
  screen_.append(buffer.data(), static_cast<size_t>(count));
  return true;
}

bool TerminalRun::wait_for(std::string_view text) {
  while (screen_.find(text) == std::string::npos) {
    if (!read_some()) {
      return false;
    }
  }
  return true;
}

void TerminalRun::interrupt() const {
  constexpr char kControlC = 3;
  ASSERT_EQ(write(terminal_, &kControlC, 1), 1);
}

int TerminalRun::finish() {
  while (read_some()) {
  }
  const int code = exit_code_of(child_);
  child_ = -1;
  return code;
}

Json parse_json(const std::string& text) {
  json_error_t error;
  Json value(json_loads(text.c_str(), JSON_REJECT_DUPLICATES, &error));
  EXPECT_NE(value, nullptr) << error.text << " in:\n" << text;
  return value;
}

TemporaryFolder::TemporaryFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "kovactl.XXXXXX").native();
  path_ = mkdtemp(name.data());
}

TemporaryFolder::~TemporaryFolder() {
  std::filesystem::remove_all(path_);
}

std::string TemporaryFolder::file(const std::string& name, std::string_view text) const {
  std::ofstream(path_ / name) << text;
  return path_ / name;
}

std::string file_text(const std::filesystem::path& file) {
  std::ifstream stream(file);
  std::ostringstream text;
  text << stream.rdbuf();
  return text.str();
}
