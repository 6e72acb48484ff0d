// This program once more, in a process that may be killed.
#pragma once

#include <sys/types.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace kovactl {

class ChildProcess {
 public:
  // Throws std::system_error.
  explicit ChildProcess(const std::vector<std::string>& arguments);
  // Kills it.
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  // The next line that it prints, without the line feed; nothing if none comes within that time,
  // if it has ended, or once `wait_on` says false.
  std::optional<std::string> next_line(double seconds, const std::function<bool()>& wait_on);

  // True if it has ended.
  bool at_end() const { return at_end_; }

 private:
  pid_t id_ = -1;
  int output_ = -1;
  std::string read_;  // not handed out yet
  bool at_end_ = false;
};

}  // namespace kovactl
