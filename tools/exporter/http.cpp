// Parsing of what clients send. Strict: what is not understood whole is refused.
#include "tools/exporter/http.h"

#include <arpa/inet.h>

#include <algorithm>
#include <charconv>

#include "tools/host/system/json_writer.h"
#include "tools/host/system/typed_number.h"

namespace kova_exporter {
namespace {

using kova_host::same_word;
using kova_host::trimmed;

std::optional<unsigned char> hexadecimal_pair(std::string_view text) {
  unsigned char value = 0;
  if (text.size() < 2) {
    return std::nullopt;
  }
  const auto [stop, error] = std::from_chars(text.data(), text.data() + 2, value, 16);
  return error == std::errc() && stop == text.data() + 2 ? std::optional(value) : std::nullopt;
}

// Only UTF-8 gets through, as JSON answers are to quote it.
bool is_utf8(std::string_view text) {
  return kova_host::JsonPtr(json_stringn(text.data(), text.size())) != nullptr;
}

// Control characters are refused whether they come bare or encoded.
std::optional<std::string> percent_decoded(std::string_view text, bool plus_is_blank) {
  std::string result;
  while (!text.empty()) {
    auto byte = static_cast<unsigned char>(text.front());
    size_t length = 1;
    if (byte == '%') {
      const auto decoded = hexadecimal_pair(text.substr(1));
      if (!decoded) {
        return std::nullopt;
      }
      byte = *decoded;
      length = 3;
    } else if (byte == '+' && plus_is_blank) {
      byte = ' ';
    }
    if (byte < 0x20 || byte == 0x7F) {
      return std::nullopt;
    }
    result += static_cast<char>(byte);
    text.remove_prefix(length);
  }
  return is_utf8(result) ? std::optional(std::move(result)) : std::nullopt;
}

// The part up to `separator`, which is taken off `text` together with it.
std::string_view take_part(std::string_view& text, char separator) {
  const std::string_view part = text.substr(0, text.find(separator));
  text.remove_prefix(std::min(part.size() + 1, text.size()));
  return part;
}

// The weight of one part of an Accept or Accept-Encoding header, such as
// "text/plain;version=0.0.4;q=0.5".
double weight(std::string_view parameters) {
  while (!parameters.empty()) {
    const std::string_view parameter = trimmed(take_part(parameters, ';'));
    if (parameter.starts_with("q=") || parameter.starts_with("Q=")) {
      double value = 0;
      const auto [stop, error] =
          std::from_chars(parameter.data() + 2, parameter.data() + parameter.size(), value);
      return error == std::errc() && stop == parameter.data() + parameter.size() && value >= 0 &&
                     value <= 1
                 ? value
                 : 0;
    }
  }
  return 1;
}

// The highest weight that such a header gives to `name` itself; nothing if it does not name it.
std::optional<double> highest_weight(std::string_view header, std::string_view name) {
  std::optional<double> highest;
  while (!header.empty()) {
    std::string_view part = take_part(header, ',');
    if (same_word(trimmed(take_part(part, ';')), name)) {
      highest = std::max(highest.value_or(0), weight(part));
    }
  }
  return highest;
}

}  // namespace

const std::vector<std::pair<const char*, const char*>>& security_headers() {
  static const std::vector<std::pair<const char*, const char*>> headers = {
      {"Content-Security-Policy",
       "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' data:; "
       "connect-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'"},
      {"X-Content-Type-Options", "nosniff"},
      {"Referrer-Policy", "no-referrer"},
      {"Cross-Origin-Resource-Policy", "same-origin"},
  };
  return headers;
}

std::vector<std::string_view> Target::values(std::string_view name) const {
  std::vector<std::string_view> result;
  for (const auto& [key, value] : parameters) {
    if (key == name) {
      result.push_back(value);
    }
  }
  return result;
}

std::optional<Target> parse_target(std::string_view target) {
  if (!target.starts_with('/') || target.size() > HttpLimits::kTarget) {
    return std::nullopt;
  }
  auto path = percent_decoded(take_part(target, '?'), false);
  if (!path) {
    return std::nullopt;
  }
  Target result{.path = std::move(*path), .parameters = {}};
  while (!target.empty()) {
    std::string_view value = take_part(target, '&');
    auto name = percent_decoded(take_part(value, '='), true);
    auto decoded = percent_decoded(value, true);
    if (!name || !decoded || result.parameters.size() == HttpLimits::kParameters) {
      return std::nullopt;
    }
    if (!name->empty()) {
      result.parameters.emplace_back(std::move(*name), std::move(*decoded));
    }
  }
  return result;
}

bool is_local_host(std::string_view host) {
  // A port, if there is one, follows the last colon, and in IPv6's case the closing bracket.
  const size_t bracket = host.find(']');
  const size_t colon = host.find(':', bracket == std::string_view::npos ? 0 : bracket);
  const std::string_view port = host.substr(std::min(colon, host.size()));
  if (port.find_first_not_of("0123456789", 1) != std::string_view::npos) {
    return false;
  }
  const std::string name(host.substr(0, colon));
  in_addr ip{};
  return same_word(name, "localhost") || name == "[::1]" ||
         (inet_pton(AF_INET, name.c_str(), &ip) == 1 && ntohl(ip.s_addr) >> 24 == 127);
}

bool prefers_openmetrics(std::string_view accept) {
  const double openmetrics = highest_weight(accept, "application/openmetrics-text").value_or(0);
  return openmetrics > 0 && openmetrics >= highest_weight(accept, "text/plain").value_or(0);
}

bool accepts_gzip(std::string_view accept_encoding) {
  auto gzip = highest_weight(accept_encoding, "gzip");
  for (const char* other : {"x-gzip", "*"}) {
    gzip = gzip ? gzip : highest_weight(accept_encoding, other);
  }
  return gzip > 0.0 && gzip >= highest_weight(accept_encoding, "identity");
}

HttpResponse error_response(int status, std::string_view message) {
  using kova_host::own;
  using kova_host::put;
  auto error = own(json_object());
  put(error, "message", kova_host::json_text(message));
  put(error, "http_status", own(json_integer(status)));
  auto document = own(json_object());
  put(document, "ok", own(json_false()));
  put(document, "error", std::move(error));
  HttpResponse response;
  response.status = status;
  response.body = std::make_shared<const std::string>(
      kova_host::json_document(document.get(), kova_host::JsonLayout::one_line));
  return response;
}

}  // namespace kova_exporter
