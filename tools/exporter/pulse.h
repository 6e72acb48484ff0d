// Whether the server answers, as seen by somebody who asks it.
#pragma once

#include <chrono>

#include "tools/exporter/server.h"

namespace kova_exporter {

// Asks a server over a connection that begins inside the process. A loop that turns but answers
// nobody has no pulse.
class Pulse {
 public:
  // The server must outlive the pulse. A question is put `between_questions` after the one before,
  // and not while that one is unanswered.
  Pulse(Server& server, std::chrono::nanoseconds between_questions);
  ~Pulse();
  Pulse(const Pulse&) = delete;
  Pulse& operator=(const Pulse&) = delete;

  // To be called at each turn of the serving loop, by its thread. True when the answer has come.
  bool beat();

 private:
  using Clock = std::chrono::steady_clock;

  void ask();
  void hang_up();

  Server& server_;
  const std::chrono::nanoseconds between_questions_;
  int descriptor_ = -1;  // while a question is open
  Clock::time_point next_question_ = Clock::now();
};

}  // namespace kova_exporter
