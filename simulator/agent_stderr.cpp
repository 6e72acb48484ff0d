// Looks at descriptor 2 when the library is loaded, and again before it is written to.
#include "simulator/agent_stderr.h"

#include <poll.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <optional>

namespace kova_sim {
namespace {

struct OpenFile {
  dev_t device = 0;
  ino_t inode = 0;

  bool operator==(const OpenFile&) const = default;
};

std::optional<OpenFile> open_stderr() {
  struct stat status = {};
  if (fstat(STDERR_FILENO, &status) != 0) {
    return std::nullopt;
  }
  return OpenFile{status.st_dev, status.st_ino};
}

const std::optional<OpenFile> stderr_at_load = open_stderr();

// What a write to a pipe without a reader, or beyond a limit, would send to this thread is kept
// away from the agent; what was there before stays there.
class SignalsKeptAway {
 public:
  SignalsKeptAway() {
    sigset_t pending;
    sigemptyset(&ours_);
    sigpending(&pending);
    for (const int number : {SIGPIPE, SIGXFSZ}) {
      if (sigismember(&pending, number) == 0) {
        sigaddset(&ours_, number);
      }
    }
    pthread_sigmask(SIG_BLOCK, &ours_, &before_);
  }
  ~SignalsKeptAway() {
    constexpr timespec AT_ONCE = {};
    while (sigtimedwait(&ours_, nullptr, &AT_ONCE) > 0) {
    }
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  }
  SignalsKeptAway(const SignalsKeptAway&) = delete;
  SignalsKeptAway& operator=(const SignalsKeptAway&) = delete;

 private:
  sigset_t ours_;
  sigset_t before_;
};

// The bytes of the valid UTF-8 character that begins there; 0 if there is none.
std::size_t character_size(const std::string& text, std::size_t at) {
  const auto byte = [&](std::size_t i) {
    return at + i < text.size() ? static_cast<unsigned char>(text[at + i]) : 0U;
  };
  const auto continues = [&](std::size_t i) { return (byte(i) & 0xC0U) == 0x80; };
  const unsigned int first = byte(0);
  if (first < 0x80) {
    return 1;
  }
  if (first >= 0xC2 && first < 0xE0) {
    return continues(1) ? 2 : 0;
  }
  if (first >= 0xE0 && first < 0xF0) {
    const bool is_shortest = first != 0xE0 || byte(1) >= 0xA0;
    const bool is_surrogate = first == 0xED && byte(1) >= 0xA0;
    return continues(1) && continues(2) && is_shortest && !is_surrogate ? 3 : 0;
  }
  const bool is_in_range = first >= 0xF0 && first <= 0xF4 && (first != 0xF0 || byte(1) >= 0x90) &&
                           (first != 0xF4 || byte(1) < 0x90);
  return is_in_range && continues(1) && continues(2) && continues(3) ? 4 : 0;
}

// C1 controls, line and paragraph separators, and the marks of bidirectional writing.
bool is_harmful(std::string_view character) {
  const auto is_between = [character](std::string_view first, std::string_view last) {
    return character.size() == first.size() && character >= first && character <= last;
  };
  return is_between("\xC2\x80", "\xC2\x9F") || character == "\xD8\x9C" ||
         is_between("\xE2\x80\x8E", "\xE2\x80\x8F") || is_between("\xE2\x80\xA8", "\xE2\x80\xAE") ||
         is_between("\xE2\x81\xA6", "\xE2\x81\xA9");
}

}  // namespace

std::string one_line(std::string text) {
  for (std::size_t at = 0; at < text.size(); ++at) {
    const std::size_t size = character_size(text, at);
    if (size == 0 || is_harmful({text.data() + at, size})) {
      text.replace(at, std::max<std::size_t>(size, 1), "?");
    } else if (size > 1) {
      at += size - 1;
    } else if (static_cast<unsigned char>(text[at]) < 0x20 || text[at] == 0x7F) {
      text[at] = ' ';
    }
  }
  return text;
}

void tell_on_stderr(const char* library, const char* reason) noexcept try {
  const int error = errno;
  const std::string line = one_line(std::string(library) + ": " + reason) + "\n";
  pollfd place = {.fd = STDERR_FILENO, .events = POLLOUT, .revents = 0};
  if (stderr_at_load && open_stderr() == stderr_at_load && poll(&place, 1, 0) == 1 &&
      place.revents == POLLOUT) {
    const SignalsKeptAway kept_away;
    static_cast<void>(write(STDERR_FILENO, line.data(), line.size()) < 0);
  }
  errno = error;
} catch (...) {
  // Without memory for the line it is not told.
}

}  // namespace kova_sim
