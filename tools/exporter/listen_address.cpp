// Where the exporter listens. Addresses are numbers; no name server is asked.
#include "tools/exporter/listen_address.h"

#include <arpa/inet.h>
#include <fmt/format.h>
#include <netinet/in.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstring>
#include <stdexcept>
#include <system_error>

namespace kova_exporter {
namespace {

constexpr std::string_view kUnix = "unix:";
constexpr int kBacklog = 128;

template <typename Address>
ListenAddress packed(const Address& address, size_t length = sizeof(Address)) {
  static_assert(sizeof(Address) <= sizeof(sockaddr_storage));
  ListenAddress result;
  std::memcpy(&result.address, &address, sizeof(Address));
  result.length = static_cast<socklen_t>(length);
  return result;
}

template <typename Address>
Address unpacked(const ListenAddress& address) {
  Address result;
  std::memcpy(&result, &address.address, sizeof(Address));
  return result;
}

ListenAddress unix_address(std::string_view path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.empty() || path.front() != '/') {
    throw std::invalid_argument("a Unix socket needs an absolute path");
  }
  if (path.size() >= sizeof(address.sun_path) || path.find('\0') != std::string_view::npos) {
    throw std::invalid_argument(
        fmt::format("a Unix socket's path has at most {} bytes", sizeof(address.sun_path) - 1));
  }
  path.copy(address.sun_path, path.size());
  return packed(address);
}

in_port_t parse_port(std::string_view text) {
  uint16_t port = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, port);
  if (text.empty() || error != std::errc() || stop != end) {
    throw std::invalid_argument(fmt::format("'{}' is no port of 0 to 65535", text));
  }
  return htons(port);
}

ListenAddress ipv6_address(const std::string& host, in_port_t port) {
  sockaddr_in6 address{};
  address.sin6_family = AF_INET6;
  address.sin6_port = port;
  if (inet_pton(AF_INET6, host.c_str(), &address.sin6_addr) != 1) {
    throw std::invalid_argument(fmt::format("'{}' is no IPv6 address", host));
  }
  return packed(address);
}

ListenAddress ipv4_address(const std::string& host, in_port_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = port;
  if (inet_pton(AF_INET, host.c_str(), &address.sin_addr) != 1) {
    throw std::invalid_argument(
        fmt::format("'{}' is no IP address (IPv6 ones stand in brackets)", host));
  }
  return packed(address);
}

// A socket file left behind by a program that was killed answers no connection.
bool is_abandoned(const ListenAddress& address) {
  struct stat file {};
  const auto path = unpacked<sockaddr_un>(address);
  if (lstat(path.sun_path, &file) != 0 || !S_ISSOCK(file.st_mode)) {
    return false;
  }
  const int probe = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  const bool refused =
      probe >= 0 &&
      connect(probe, reinterpret_cast<const sockaddr*>(&address.address), address.length) != 0 &&
      errno == ECONNREFUSED;
  if (probe >= 0) {
    close(probe);
  }
  return refused;
}

std::optional<FileIdentity> identity_of(const char* path) {
  struct stat file {};
  return lstat(path, &file) == 0 ? std::optional(FileIdentity{file.st_dev, file.st_ino})
                                 : std::nullopt;
}

void set_option(int descriptor, int level, int option, int value) {
  (void)setsockopt(descriptor, level, option, &value, sizeof(value));
}

}  // namespace

bool ListenAddress::is_loopback() const {
  if (address.ss_family == AF_INET) {
    return ntohl(unpacked<sockaddr_in>(*this).sin_addr.s_addr) >> 24 == IN_LOOPBACKNET;
  }
  const in6_addr host = unpacked<sockaddr_in6>(*this).sin6_addr;
  return address.ss_family == AF_INET6 &&
         (IN6_IS_ADDR_LOOPBACK(&host) ||
          (IN6_IS_ADDR_V4MAPPED(&host) && host.s6_addr[12] == IN_LOOPBACKNET));
}

std::string ListenAddress::url() const {
  if (is_unix()) {
    return std::string(kUnix) + unpacked<sockaddr_un>(*this).sun_path;
  }
  char text[INET6_ADDRSTRLEN] = "";
  if (address.ss_family == AF_INET) {
    const auto ip = unpacked<sockaddr_in>(*this);
    inet_ntop(AF_INET, &ip.sin_addr, text, sizeof(text));
    return fmt::format("http://{}:{}", text, ntohs(ip.sin_port));
  }
  const auto ip = unpacked<sockaddr_in6>(*this);
  inet_ntop(AF_INET6, &ip.sin6_addr, text, sizeof(text));
  return fmt::format("http://[{}]:{}", text, ntohs(ip.sin6_port));
}

ListenAddress parse_listen_address(std::string_view text) {
  if (text.starts_with(kUnix)) {
    return unix_address(text.substr(kUnix.size()));
  }
  const size_t colon = text.rfind(':');
  if (colon == std::string_view::npos || text.ends_with(']')) {
    throw std::invalid_argument(fmt::format("'{}' has no port", text));
  }
  const in_port_t port = parse_port(text.substr(colon + 1));
  const std::string host(text.substr(0, colon));
  if (host.empty()) {
    return ipv6_address("::", port);
  }
  if (host.front() == '[' && host.back() == ']') {
    return ipv6_address(host.substr(1, host.size() - 2), port);
  }
  return ipv4_address(host == "localhost" ? "127.0.0.1" : host, port);
}

Listener::Listener(const ListenAddress& address)
    : address_(address),
      descriptor_(
          socket(address.address.ss_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
  try {
    if (descriptor_ < 0) {
      throw std::system_error(errno, std::generic_category());
    }
    bind_socket();
  } catch (const std::system_error& error) {
    if (descriptor_ >= 0) {
      close(descriptor_);
    }
    throw std::system_error(error.code(), "cannot listen on " + address.url());
  }
}

Listener::~Listener() {
  remove_file();
  close(descriptor_);
}

void Listener::remove_file() const {
  const auto path = unpacked<sockaddr_un>(address_);
  // Another exporter may have taken the path, and serves there.
  if (file_ && identity_of(path.sun_path) == file_) {
    unlink(path.sun_path);
  }
}

void Listener::bind_socket() {
  if (address_.is_unix()) {
    if (is_abandoned(address_)) {
      unlink(unpacked<sockaddr_un>(address_).sun_path);
    }
  } else {
    // Ports of connections that have just ended do not keep a restarted exporter waiting.
    set_option(descriptor_, SOL_SOCKET, SO_REUSEADDR, 1);
    set_option(descriptor_, IPPROTO_IPV6, IPV6_V6ONLY, 0);
  }
  auto* raw = reinterpret_cast<sockaddr*>(&address_.address);
  if (bind(descriptor_, raw, address_.length) != 0) {
    throw std::system_error(errno, std::generic_category());
  }
  if (address_.is_unix()) {
    file_ = identity_of(unpacked<sockaddr_un>(address_).sun_path);
  }
  if (listen(descriptor_, kBacklog) != 0 ||
      (!address_.is_unix() && getsockname(descriptor_, raw, &address_.length) != 0)) {
    throw std::system_error(errno, std::generic_category());
  }
}

}  // namespace kova_exporter
