// Requests and answers as the exporter's own code sees them, whatever brings them in. Nothing here
// knows a socket: the fuzz target and the tests hand requests over directly.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kova_exporter {

struct HttpLimits {
  static constexpr size_t kTarget = 4096;       // bytes of path and query; more is 414
  static constexpr size_t kHeaderBytes = 8192;  // names and values together; more is 431
  static constexpr size_t kHeaders = 64;
  static constexpr size_t kParameters = 80;  // of a query
};

// What of a request decides its answer. Texts are as the client sent them.
struct HttpRequest {
  std::string method;
  std::string target;  // path and query, still percent-encoded
  bool http_1_0 = false;
  std::vector<std::string> hosts;  // every Host header
  std::string accept;
  std::string accept_encoding;
  std::string if_none_match;
  size_t headers = 0;
  size_t header_bytes = 0;
};

struct HttpResponse {
  int status = 200;
  std::string content_type = "application/json";
  // Owns the text, or points to one that lives as long as the program; shared between answers.
  std::shared_ptr<const std::string> body;
  std::string_view built_in;                               // a file of the page, instead of a body
  std::vector<std::pair<std::string, std::string>> extra;  // headers besides the usual ones
  bool event_stream = false;                               // no body: the sweeps follow, one by one

  std::string_view text() const { return body ? std::string_view(*body) : built_in; }
};

// Headers that every answer has; they tell a browser to trust nothing but this page's own files.
const std::vector<std::pair<const char*, const char*>>& security_headers();

// A path and its parameters, decoded.
struct Target {
  std::string path;
  std::vector<std::pair<std::string, std::string>> parameters;

  std::vector<std::string_view> values(std::string_view name) const;
};

// Nothing for anything but "/path?name=value&...": a target of another form, a broken percent
// encoding, a control character, or more parameters than the limit.
std::optional<Target> parse_target(std::string_view target);

// True for a Host header that names this machine itself: localhost, 127.x.y.z or [::1], with any
// port. A browser that was tricked into asking a loopback address under another name (DNS
// rebinding) sends that name.
bool is_local_host(std::string_view host);

// True if an Accept header asks for OpenMetrics at least as much as for plain text.
bool prefers_openmetrics(std::string_view accept);

// True if an Accept-Encoding header allows gzip and does not ask for the bare text rather.
bool accepts_gzip(std::string_view accept_encoding);

// An error's answer: {"ok": false, "error": {"message": ..., "http_status": ...}}.
HttpResponse error_response(int status, std::string_view message);

}  // namespace kova_exporter
