// Questions to the own server.
#include "tools/exporter/pulse.h"

#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string_view>

namespace kova_exporter {
namespace {

// Whether the device answers is not what is asked: 503 is an answer too.
constexpr std::string_view kQuestion = "HEAD /healthz HTTP/1.0\r\n\r\n";
constexpr std::string_view kAnswer = "HTTP/1.";

}  // namespace

Pulse::Pulse(Server& server, std::chrono::nanoseconds between_questions)
    : server_(server), between_questions_(between_questions) {}

Pulse::~Pulse() {
  hang_up();
}

bool Pulse::beat() {
  if (descriptor_ < 0) {
    ask();
    return false;
  }
  std::array<char, 16> answer;
  const ssize_t size = recv(descriptor_, answer.data(), answer.size(), 0);
  if (size < 0 && (errno == EAGAIN || errno == EINTR)) {
    return false;
  }
  hang_up();
  return size > 0 &&
         std::string_view(answer.data(), static_cast<size_t>(size)).starts_with(kAnswer);
}

void Pulse::ask() {
  if (Clock::now() < next_question_) {
    return;
  }
  descriptor_ = server_.connect_inside();
  if (descriptor_ < 0) {
    return;
  }
  next_question_ = Clock::now() + std::chrono::duration_cast<Clock::duration>(between_questions_);
  if (send(descriptor_, kQuestion.data(), kQuestion.size(), MSG_NOSIGNAL) !=
      static_cast<ssize_t>(kQuestion.size())) {
    hang_up();
  }
}

void Pulse::hang_up() {
  if (descriptor_ >= 0) {
    close(descriptor_);
    descriptor_ = -1;
  }
}

}  // namespace kova_exporter
