// Starts and ends a worker's process.
#include "tools/host/session/worker_process.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <new>
#include <system_error>
#include <utility>

#include "tools/host/session/worker.h"

// This header of glibc 2.36 does not say that its functions are C's.
extern "C" {
#include <sys/pidfd.h>
}

namespace kova_host {
namespace {

[[noreturn]] void fail(int error) {
  throw std::system_error(error, std::generic_category(), "cannot start the device's process");
}

// Owned, and above all that a worker is born with: handing it over overwrites no other.
class HandedOver {
 public:
  explicit HandedOver(int descriptor) {
    constexpr int kAboveAll = 10;
    const int error = errno;
    number_ = descriptor < 0 ? -1 : fcntl(descriptor, F_DUPFD_CLOEXEC, kAboveAll);
    if (descriptor >= 0) {
      close(descriptor);
    }
    if (number_ < 0) {
      fail(descriptor < 0 ? error : errno);
    }
  }
  ~HandedOver() { close(number_); }
  HandedOver(const HandedOver&) = delete;
  HandedOver& operator=(const HandedOver&) = delete;

  int number() const { return number_; }

 private:
  int number_ = -1;
};

// Who may write no file of such a size (ulimit -f) does without knowing where the worker is.
Whereabouts* new_page(int memory) {
  const bool is_shared = ftruncate(memory, sizeof(Whereabouts)) == 0;
  void* page =
      mmap(nullptr, sizeof(Whereabouts), PROT_READ | PROT_WRITE,
           is_shared ? MAP_SHARED : MAP_PRIVATE | MAP_ANONYMOUS, is_shared ? memory : -1, 0);
  if (page == MAP_FAILED) {
    fail(errno);
  }
  return new (page) Whereabouts;
}

// The attributes and actions of posix_spawn.
class Spawning {
 public:
  Spawning() {
    if (posix_spawn_file_actions_init(&actions_) != 0 || posix_spawnattr_init(&attributes_) != 0) {
      throw std::bad_alloc();
    }
    sigset_t none;
    sigset_t all;
    sigemptyset(&none);
    sigfillset(&all);
    posix_spawnattr_setsigmask(&attributes_, &none);
    posix_spawnattr_setsigdefault(&attributes_, &all);
    posix_spawnattr_setflags(
        &attributes_,
        static_cast<short>(POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSID));
  }
  ~Spawning() {
    posix_spawnattr_destroy(&attributes_);
    posix_spawn_file_actions_destroy(&actions_);
  }
  Spawning(const Spawning&) = delete;
  Spawning& operator=(const Spawning&) = delete;

  // The library's texts are for nobody. A sanitizer's are.
  void take_streams_away() {
    posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions_, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    posix_spawn_file_actions_addopen(&actions_, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
#endif
  }

  void hand_over(const HandedOver& descriptor, int number) {
    posix_spawn_file_actions_adddup2(&actions_, descriptor.number(), number);
  }

  pid_t start(const std::string& program) {
    std::string name = "kova-worker";
    std::string argument = kWorkerArgument;
    std::string parent = std::to_string(getpid());
    std::array<char*, 4> arguments = {name.data(), argument.data(), parent.data(), nullptr};
    pid_t id = -1;
    const int error =
        posix_spawn(&id, program.c_str(), &actions_, &attributes_, arguments.data(), environ);
    if (error != 0) {
      fail(error);
    }
    return id;
  }

 private:
  posix_spawn_file_actions_t actions_{};
  posix_spawnattr_t attributes_{};
};

}  // namespace

WorkerProcess::WorkerProcess(const std::string& program) {
  std::array<int, 2> pair{};
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, pair.data()) != 0) {
    fail(errno);
  }
  HandedOver its_socket(pair[1]);
  HandedOver our_socket(pair[0]);
  const HandedOver memory(memfd_create("whereabouts", MFD_CLOEXEC));
  page_ = new_page(memory.number());
  Spawning spawning;
  spawning.take_streams_away();
  spawning.hand_over(its_socket, kWorkerSocket);
  spawning.hand_over(memory, kWorkerPage);
  try {
    id_ = spawning.start(program);
  } catch (...) {
    munmap(page_, sizeof(Whereabouts));
    throw;
  }
  process_ = pidfd_open(id_, 0);
  socket_ = fcntl(our_socket.number(), F_DUPFD_CLOEXEC, 0);
  if (process_ < 0 || socket_ < 0) {
    const int error = errno;
    ::kill(id_, SIGKILL);
    waitpid(id_, nullptr, 0);
    munmap(page_, sizeof(Whereabouts));
    close(process_);
    fail(error);
  }
}

WorkerProcess::~WorkerProcess() {
  kill();
  close(socket_);
  close(process_);
  munmap(page_, sizeof(Whereabouts));
}

std::optional<ProcessEnd> WorkerProcess::wait(std::chrono::milliseconds patience) {
  if (end_) {
    return end_;
  }
  pollfd descriptor = {process_, POLLIN, 0};
  if (poll(&descriptor, 1, static_cast<int>(patience.count())) <= 0) {
    return std::nullopt;
  }
  // Its number is that of its session for as long as it is not waited for.
  ::kill(-id_, SIGKILL);
  siginfo_t information{};
  if (waitid(P_PIDFD, static_cast<id_t>(process_), &information, WEXITED) == 0) {
    end_ = ProcessEnd{information.si_code != CLD_EXITED, information.si_status};
  } else {
    end_ = ProcessEnd{};  // somebody else has waited for it
  }
  return end_;
}

void WorkerProcess::ask_to_end() const {
  if (!end_) {
    pidfd_send_signal(process_, SIGTERM, nullptr, 0);
  }
}

bool WorkerProcess::kill() {
  constexpr std::chrono::seconds kPatience{1};
  if (!end_) {
    ::kill(-id_, SIGKILL);  // with all that it has started
    pidfd_send_signal(process_, SIGKILL, nullptr, 0);
  }
  return wait(kPatience).has_value();
}

}  // namespace kova_host
