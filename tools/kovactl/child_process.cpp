// This program once more, in a process that may be killed.
#include "tools/kovactl/child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <system_error>

namespace kovactl {

namespace {

constexpr const char* kThisProgram = "/proc/self/exe";

void check(int error) {
  if (error != 0) {
    throw std::system_error(error, std::generic_category(), "cannot start another kovactl");
  }
}

// Signals reach it as they would any program; its messages are for nobody.
pid_t spawn(char* const* arguments, int output) {
  posix_spawn_file_actions_t actions;
  check(posix_spawn_file_actions_init(&actions));
  posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  posix_spawnattr_t attributes;
  check(posix_spawnattr_init(&attributes));
  sigset_t none;
  sigemptyset(&none);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
  pid_t id = -1;
  const int error = posix_spawn(&id, kThisProgram, &actions, &attributes, arguments, environ);
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  check(error);
  return id;
}

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& arguments) {
  std::vector<std::string> words = {"kovactl"};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> pointers;
  pointers.reserve(words.size() + 1);
  for (std::string& word : words) {
    pointers.push_back(word.data());
  }
  pointers.push_back(nullptr);
  std::array<int, 2> pipe{};
  check(pipe2(pipe.data(), O_CLOEXEC) == 0 ? 0 : errno);
  output_ = pipe[0];
  id_ = spawn(pointers.data(), pipe[1]);
  close(pipe[1]);
}

ChildProcess::~ChildProcess() {
  kill(id_, SIGKILL);
  close(output_);
}

std::optional<std::string> ChildProcess::next_line(double seconds,
                                                   const std::function<bool()>& wait_on) {
  using std::chrono::steady_clock;
  const auto start = steady_clock::now();
  constexpr int kSliceMilliseconds = 50;
  size_t end = 0;
  while ((end = read_.find('\n')) == std::string::npos) {
    const std::chrono::duration<double> waited = steady_clock::now() - start;
    if (at_end_ || waited.count() > seconds || !wait_on()) {
      return std::nullopt;
    }
    pollfd event = {.fd = output_, .events = POLLIN, .revents = 0};
    if (poll(&event, 1, kSliceMilliseconds) > 0) {
      std::array<char, 4096> buffer{};
      const ssize_t count = read(output_, buffer.data(), buffer.size());
      at_end_ = count <= 0;
      read_.append(buffer.data(), static_cast<size_t>(std::max<ssize_t>(count, 0)));
    }
  }
  std::string line = read_.substr(0, end);
  read_.erase(0, end + 1);
  return line;
}

}  // namespace kovactl
