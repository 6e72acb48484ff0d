// The process of a worker, from its start to its certain end.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>

#include "tools/host/session/device_guard.h"

namespace kova_host {

// How a process has ended.
struct ProcessEnd {
  bool by_signal = false;
  int number = 0;  // the signal's, or the exit code
};

class WorkerProcess {
 public:
  // Starts `program` as a worker: in a session of its own, with its socket and the page, its
  // standard streams on nothing. It is killed when the calling thread ends. Throws
  // std::system_error.
  explicit WorkerProcess(const std::string& program);
  // Ends it, whatever it does.
  ~WorkerProcess();
  WorkerProcess(const WorkerProcess&) = delete;
  WorkerProcess& operator=(const WorkerProcess&) = delete;

  int socket() const { return socket_; }
  // Readable once it has ended.
  int end_descriptor() const { return process_; }
  // What it tells of itself; to be checked like all that comes from it.
  const Whereabouts& page() const { return *page_; }

  // Waits for so long for the end. What it has started in its session goes with it.
  std::optional<ProcessEnd> wait(std::chrono::milliseconds patience);

  // Asks by SIGTERM.
  void ask_to_end() const;

  // Kills it. False if it has not gone a second later, because the kernel holds it: it is left
  // behind then, and goes when the kernel lets go.
  bool kill();

 private:
  pid_t id_ = -1;
  int process_ = -1;  // a pidfd
  int socket_ = -1;
  Whereabouts* page_ = nullptr;
  std::optional<ProcessEnd> end_;
};

}  // namespace kova_host
