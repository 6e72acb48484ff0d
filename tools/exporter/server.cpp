// The HTTP side, on GNU libmicrohttpd with the exporter's own event loop. Its callbacks are C: no
// exception may leave them.
#include "tools/exporter/server.h"

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <stdexcept>
#include <utility>

#include "tools/exporter/log.h"

namespace kova_exporter {
namespace {

constexpr std::string_view kStreamGreeting = "retry: 3000\n\n";

// A header that stands several times is one list.
void add_to_list(std::string& list, std::string_view text) {
  list.append(list.empty() ? "" : ",").append(text);
}

MHD_Result collect_header(void* request, MHD_ValueKind /*kind*/, const char* name,
                          const char* value) {
  auto& parsed = *static_cast<HttpRequest*>(request);
  const std::string_view text = value == nullptr ? "" : value;
  parsed.headers += 1;
  parsed.header_bytes += std::strlen(name) + text.size();
  try {
    if (strcasecmp(name, "Host") == 0) {
      parsed.hosts.emplace_back(text);
    } else if (strcasecmp(name, "Accept") == 0) {
      add_to_list(parsed.accept, text);
    } else if (strcasecmp(name, "Accept-Encoding") == 0) {
      add_to_list(parsed.accept_encoding, text);
    } else if (strcasecmp(name, "If-None-Match") == 0) {
      parsed.if_none_match = text;
    }
  } catch (const std::bad_alloc&) {
    return MHD_NO;
  }
  return MHD_YES;
}

void add_headers(MHD_Response* raw, const HttpResponse& response) {
  for (const auto& [name, value] : security_headers()) {
    MHD_add_response_header(raw, name, value);
  }
  for (const auto& [name, value] : response.extra) {
    MHD_add_response_header(raw, name.c_str(), value.c_str());
  }
  MHD_add_response_header(raw, MHD_HTTP_HEADER_CONTENT_TYPE, response.content_type.c_str());
}

HttpResponse busy(std::string_view reason) {
  HttpResponse refusal = error_response(503, reason);
  refusal.extra.emplace_back("Retry-After", "10");
  return refusal;
}

bool has_body(MHD_Connection* connection) {
  return MHD_lookup_connection_value(connection, MHD_HEADER_KIND, MHD_HTTP_HEADER_CONTENT_LENGTH) !=
             nullptr ||
         MHD_lookup_connection_value(connection, MHD_HEADER_KIND,
                                     MHD_HTTP_HEADER_TRANSFER_ENCODING) != nullptr;
}

MHD_Result queue(MHD_Connection* connection, int status, MHD_Response* raw) {
  const MHD_Result result = MHD_queue_response(connection, static_cast<unsigned>(status), raw);
  MHD_destroy_response(raw);  // which the queue still holds
  return result;
}

Client* client_of(MHD_Connection* connection) {
  const auto* info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_SOCKET_CONTEXT);
  return static_cast<Client*>(info->socket_context);
}

}  // namespace

// One request of a client.
struct Server::Exchange {
  std::string target;
  bool has_headers = false;
  bool has_waited = false;
};

// The text that an answer is sent from.
struct Server::Body {
  Server* server;
  std::shared_ptr<const std::string> text;
};

// A client that waits for events. At most one event is under way to it; what comes while it is
// slow is skipped, for each event is whole.
struct Server::Stream {
  Server* server;
  MHD_Connection* connection;
  Client* client;
  std::shared_ptr<const std::string> text;  // under way
  size_t sent = 0;
  uint64_t number = 0;  // of the newest event that was begun
  bool suspended = false;
};

Server::Server(const Listener& listener, Site& site, ServerLimits limits)
    : site_(site),
      limits_(limits),
      clients_({.connections = limits.connections,
                .connections_per_address = limits.connections_per_address}) {
  announce(site.newest_event());
  // Who comes at a full house is let in, and the longest idle one is sent out: only those who come
  // in one turn wait at the door. The library lets ten in at a time.
  constexpr unsigned kDoorway = 16;
  constexpr unsigned kFlags = MHD_USE_EPOLL | MHD_ALLOW_SUSPEND_RESUME;
  daemon_ = MHD_start_daemon(kFlags, 0, nullptr, nullptr, &on_request, this,                //
                             MHD_OPTION_LISTEN_SOCKET, listener.descriptor(),               //
                             MHD_OPTION_CONNECTION_LIMIT, limits.connections + kDoorway,    //
                             MHD_OPTION_CONNECTION_MEMORY_LIMIT, limits.connection_memory,  //
                             MHD_OPTION_CONNECTION_TIMEOUT,
                             static_cast<unsigned>(limits.next_request.count()),  //
                             MHD_OPTION_STRICT_FOR_CLIENT, 1,                     //
                             MHD_OPTION_URI_LOG_CALLBACK, &on_target, this,       //
                             MHD_OPTION_NOTIFY_CONNECTION, &on_connection, this,  //
                             MHD_OPTION_NOTIFY_COMPLETED, &on_completed, this, MHD_OPTION_END);
  if (daemon_ == nullptr) {
    throw std::runtime_error("cannot start the HTTP server");
  }
}

Server::~Server() {
  closing_ = true;
  resume_streams();
  while (!later_.empty()) {
    resume_next_request();
  }
  MHD_run(daemon_);
  // The listening socket is the listener's: the library must not close it too.
  (void)MHD_quiesce_daemon(daemon_);
  MHD_stop_daemon(daemon_);
}

int Server::descriptor() const {
  return MHD_get_daemon_info(daemon_, MHD_DAEMON_INFO_EPOLL_FD)->epoll_fd;
}

std::chrono::milliseconds Server::patience() const {
  if (!later_.empty()) {
    return std::chrono::milliseconds(0);
  }
  constexpr MHD_UNSIGNED_LONG_LONG kTick = 1000;
  MHD_UNSIGNED_LONG_LONG milliseconds = kTick;
  if (MHD_get_timeout(daemon_, &milliseconds) != MHD_YES) {
    milliseconds = kTick;
  }
  return std::chrono::milliseconds(std::min(milliseconds, kTick));
}

void Server::serve() {
  // A device that hangs publishes nothing: the sweep just grows old.
  if (site_.state().up != was_up_ || Clock::now() - event_time_ >= limits_.quiet) {
    announce(site_.status_event());
  }
  if (!later_.empty()) {
    resume_next_request();
    MHD_run(daemon_);
    // Who has come meanwhile is let in here, and answered below, before the next that takes long.
    MHD_run(daemon_);
  }
  MHD_run(daemon_);
  clients_.cut_off();
}

int Server::connect_inside() {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends) != 0) {
    return -1;
  }
  const sockaddr address{.sa_family = AF_UNIX, .sa_data = {}};
  // Which closes its end, whether it takes it or not.
  if (MHD_add_connection(daemon_, ends[1], &address, sizeof(address)) != MHD_YES) {
    close(ends[0]);
    return -1;
  }
  return ends[0];
}

void Server::announce(std::string event) {
  event_ = std::make_shared<const std::string>(std::move(event));
  event_number_ += 1;
  event_time_ = Clock::now();
  was_up_ = site_.state().up;
  resume_streams();
}

void Server::resume_streams() {
  for (Stream* stream : streams_) {
    if (stream->suspended) {
      stream->suspended = false;
      MHD_resume_connection(stream->connection);
    }
  }
}

void Server::resume_next_request() {
  MHD_resume_connection(later_.front());
  later_.pop_front();
}

// A turn answers all who ask for what is at hand, and one who asks for what has to be made for him:
// the others wait for no more than that, however many such requests there are.
bool Server::comes_later(MHD_Connection* connection, Exchange& exchange) {
  if (Site::is_at_hand(exchange.target) || std::exchange(exchange.has_waited, true)) {
    return false;
  }
  Client* client = client_of(connection);
  if (client == nullptr) {
    return false;
  }
  later_.push_back(connection);
  client->begin_answer(Clock::now() + limits_.answer);
  MHD_suspend_connection(connection);
  return true;
}

void Server::on_connection(void* self, MHD_Connection* connection, void** context,
                           MHD_ConnectionNotificationCode code) {
  auto& server = *static_cast<Server*>(self);
  if (code == MHD_CONNECTION_NOTIFY_CLOSED) {
    server.clients_.remove(static_cast<Client*>(*context));
    return;
  }
  const auto* info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD);
  try {
    *context = server.clients_.add(info->connect_fd, Clock::now() + server.limits_.first_request);
  } catch (const std::bad_alloc&) {
    *context = nullptr;
    shutdown(info->connect_fd, SHUT_RDWR);
  }
}

void* Server::on_target(void* /*self*/, const char* target, MHD_Connection* /*connection*/) {
  try {
    return new Exchange{.target = target};
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

// The library calls once when it has the headers and again at the end of the request. An answer to
// the first call closes the connection: right for a request with a body, which nobody wants.
MHD_Result Server::on_request(void* self, MHD_Connection* connection, const char* /*path*/,
                              const char* method, const char* version, const char* /*upload*/,
                              size_t* /*upload_size*/, void** exchange) {
  if (*exchange == nullptr) {
    return MHD_NO;
  }
  try {
    auto& request = *static_cast<Exchange*>(*exchange);
    if (!std::exchange(request.has_headers, true) && !has_body(connection)) {
      return MHD_YES;
    }
    auto& server = *static_cast<Server*>(self);
    if (server.closing_) {
      return MHD_NO;
    }
    return server.comes_later(connection, request)
               ? MHD_YES
               : server.answer(connection, request, method, version);
  } catch (const std::exception& error) {
    log(LogLevel::error, "a request failed: {}", error.what());
    return MHD_NO;
  }
}

void Server::on_completed(void* self, MHD_Connection* connection, void** exchange,
                          MHD_RequestTerminationCode /*code*/) {
  delete static_cast<Exchange*>(*exchange);
  *exchange = nullptr;
  if (Client* client = client_of(connection)) {
    client->end_answer(Clock::now() + static_cast<Server*>(self)->limits_.next_request);
  }
}

MHD_Result Server::answer(MHD_Connection* connection, const Exchange& exchange, const char* method,
                          const char* version) {
  HttpRequest request;
  request.method = method;
  request.target = exchange.target;
  request.http_1_0 = std::strcmp(version, MHD_HTTP_VERSION_1_0) == 0;
  MHD_get_connection_values(connection, MHD_HEADER_KIND, &collect_header, &request);
  Client* client = client_of(connection);
  if (client == nullptr) {
    return MHD_NO;
  }
  client->begin_answer(Clock::now() + limits_.answer);
  const HttpResponse response = site_.answer(request);
  log(LogLevel::debug, "{} {} -> {}", request.method, request.target, response.status);
  return response.event_stream && request.method == "GET" ? open_stream(connection, response)
                                                          : send(connection, response);
}

MHD_Result Server::send(MHD_Connection* connection, const HttpResponse& response) {
  // Clients that take large answers slowly must not fill the memory.
  if (answer_bytes_ + response.text().size() > limits_.answer_bytes && response.status == 200) {
    return send(connection, busy("too many answers are under way"));
  }
  MHD_Response* raw = make_response(response);
  if (raw == nullptr) {
    return MHD_NO;
  }
  add_headers(raw, response);
  return queue(connection, response.status, raw);
}

// The library does not write to what it sends; its signatures only say void*.
MHD_Response* Server::make_response(const HttpResponse& response) {
  auto* text = const_cast<char*>(response.text().data());
  if (response.body == nullptr) {
    return MHD_create_response_from_buffer(response.text().size(), text, MHD_RESPMEM_PERSISTENT);
  }
  auto body = std::make_unique<Body>(Body{this, response.body});
  MHD_Response* raw = MHD_create_response_from_buffer_with_free_callback_cls(
      response.body->size(), text, &on_body_end, body.get());
  if (raw != nullptr) {
    answer_bytes_ += body.release()->text->size();
  }
  return raw;
}

void Server::on_body_end(void* raw) {
  const std::unique_ptr<Body> body(static_cast<Body*>(raw));
  body->server->answer_bytes_ -= body->text->size();
}

MHD_Result Server::open_stream(MHD_Connection* connection, const HttpResponse& response) {
  if (streams_.size() >= limits_.streams) {
    return send(connection, busy("too many clients follow the events"));
  }
  auto stream = std::make_unique<Stream>(
      Stream{.server = this,
             .connection = connection,
             .client = client_of(connection),
             .text = std::make_shared<const std::string>(kStreamGreeting)});
  constexpr size_t kBlock = 8 * 1024;
  MHD_Response* raw = MHD_create_response_from_callback(MHD_SIZE_UNKNOWN, kBlock, &on_stream,
                                                        stream.get(), &on_stream_end);
  if (raw == nullptr) {
    return MHD_NO;
  }
  streams_.insert(stream.release());
  add_headers(raw, response);
  return queue(connection, response.status, raw);
}

ssize_t Server::on_stream(void* raw, uint64_t /*position*/, char* buffer, size_t size) {
  auto& stream = *static_cast<Stream*>(raw);
  Server& server = *stream.server;
  if (server.closing_) {
    return MHD_CONTENT_READER_END_OF_STREAM;
  }
  if (stream.sent == stream.text->size() && stream.number != server.event_number_) {
    stream.text = server.event_;
    stream.number = server.event_number_;
    stream.sent = 0;
    stream.client->begin_answer(Clock::now() + server.limits_.event);
  }
  if (stream.sent == stream.text->size()) {
    stream.client->deadline = Clock::time_point::max();
    stream.suspended = true;
    MHD_suspend_connection(stream.connection);
    return 0;
  }
  const size_t copied = stream.text->copy(buffer, size, stream.sent);
  stream.sent += copied;
  return static_cast<ssize_t>(copied);
}

void Server::on_stream_end(void* raw) {
  auto* stream = static_cast<Stream*>(raw);
  stream->server->streams_.erase(stream);
  delete stream;
}

}  // namespace kova_exporter
