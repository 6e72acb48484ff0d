// Who is connected, since when each has been idle, and whose connection is ended so that no one
// client takes the places of all. Nothing here knows HTTP.
#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace kova_exporter {

// One client's connection, from accept to close.
struct Client {
  using Clock = std::chrono::steady_clock;

  int descriptor = -1;
  std::string address;                      // "" for a Unix socket
  Clock::time_point deadline;               // it is ended if it lets this pass
  Clock::time_point active = Clock::now();  // when it last asked, or was last answered
  bool is_answered = false;                 // a request of its is under way
  bool is_ended = false;                    // shut down; the HTTP library tidies up

  // A whole request has come, which is to be answered by `until`; or the answer is out, and the
  // next request may take until then.
  void begin_answer(Clock::time_point until);
  void end_answer(Clock::time_point until);
};

// Ending a connection means to shut its socket down: whoever polls it sees its end and closes it.
class Clients {
 public:
  struct Limits {
    size_t connections;              // of all clients
    size_t connections_per_address;  // Unix sockets have none, and count for all only
  };

  explicit Clients(Limits limits) : limits_(limits) {}

  // The client of a connected socket, which stays the caller's. Throws std::bad_alloc.
  Client* add(int descriptor, Client::Clock::time_point deadline);
  // Whose socket is closed. Null is allowed.
  void remove(const Client* client);

  // Ends those who let their deadline pass, those who hung up half-way through a request, and
  // where there are too many the longest idle ones. Call it once the sockets have been served.
  void cut_off();

 private:
  void end_half_requests();
  void end_surplus(std::vector<Client*> clients, size_t limit, const std::string& whose);
  void tell(const std::string& whose, size_t limit);

  const Limits limits_;
  std::vector<std::unique_ptr<Client>> clients_;
  bool is_checked_ = true;  // nobody has come since no limit was exceeded
  size_t untold_ = 0;       // ended for a limit's sake since the last line in the log
  Client::Clock::time_point told_ = Client::Clock::time_point::min();
};

}  // namespace kova_exporter
