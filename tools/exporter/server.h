// The HTTP side: sockets, limits on them, and the streams of events.
#pragma once

#include <microhttpd.h>

#include <chrono>
#include <deque>
#include <memory>
#include <set>
#include <string>

#include "tools/exporter/clients.h"
#include "tools/exporter/listen_address.h"
#include "tools/exporter/site.h"

namespace kova_exporter {

// Bounds of what clients can make the exporter hold. A client that is too slow is cut off.
struct ServerLimits {
  unsigned connections = 128;              // of all clients
  unsigned connections_per_address = 16;   // Unix sockets excepted
  unsigned streams = 16;                   // of events; more are answered 503
  size_t answer_bytes = 16 * 1024 * 1024;  // of all answers under way; beyond it they are 503
  size_t connection_memory = 24 * 1024;    // bytes of request and headers
  std::chrono::seconds first_request{10};  // from the connection to the end of its headers
  std::chrono::seconds answer{30};         // from there until the client has the whole answer
  std::chrono::seconds next_request{120};  // from one answer to the end of the next headers
  std::chrono::seconds event{15};          // until a stream's client has taken an event
  std::chrono::seconds quiet{10};          // a stream with no sweep for so long gets a status
};

// Serves on the caller's thread: whenever descriptor() is readable, and at least every second,
// call serve().
class Server {
 public:
  // Throws std::runtime_error if the library refuses. Takes nothing over: listener and site must
  // outlive the server.
  Server(const Listener& listener, Site& site, ServerLimits limits = {});
  ~Server();
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  int descriptor() const;
  // Until serve() is needed even if nothing happens.
  std::chrono::milliseconds patience() const;
  void serve();

  // A snapshot has been published: streams get `event`.
  void announce(std::string event);

  // A connection to this server that passes no network: its client's end, non-blocking and the
  // caller's to close. -1 if there is no room for it now.
  int connect_inside();

 private:
  using Clock = Client::Clock;
  struct Exchange;
  struct Stream;
  struct Body;

  static void on_connection(void* self, MHD_Connection* connection, void** context,
                            MHD_ConnectionNotificationCode code);
  static void* on_target(void* self, const char* target, MHD_Connection* connection);
  static MHD_Result on_request(void* self, MHD_Connection* connection, const char* path,
                               const char* method, const char* version, const char* upload,
                               size_t* upload_size, void** exchange);
  static void on_completed(void* self, MHD_Connection* connection, void** exchange,
                           MHD_RequestTerminationCode code);
  static void on_body_end(void* body);
  static ssize_t on_stream(void* stream, uint64_t position, char* buffer, size_t size);
  static void on_stream_end(void* stream);

  MHD_Result answer(MHD_Connection* connection, const Exchange& exchange, const char* method,
                    const char* version);
  MHD_Result send(MHD_Connection* connection, const HttpResponse& response);
  MHD_Response* make_response(const HttpResponse& response);
  MHD_Result open_stream(MHD_Connection* connection, const HttpResponse& response);
  bool comes_later(MHD_Connection* connection, Exchange& exchange);
  void resume_streams();
  void resume_next_request();

  Site& site_;
  const ServerLimits limits_;
  Clients clients_;
  std::set<Stream*> streams_;
  std::deque<MHD_Connection*> later_;         // with requests that are answered one a turn
  size_t answer_bytes_ = 0;                   // under way
  std::shared_ptr<const std::string> event_;  // the newest
  uint64_t event_number_ = 0;
  Clock::time_point event_time_;
  bool was_up_ = false;  // as the newest event tells
  bool closing_ = false;
  MHD_Daemon* daemon_ = nullptr;
};

}  // namespace kova_exporter
