// Where the exporter listens: an address as people type it, and the socket that is bound to it.
#pragma once

#include <sys/socket.h>
#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kova_exporter {

// "127.0.0.1:9848", "localhost:9848", "[::1]:9848"; "[::]:9848" and ":9848" for every address of
// the machine, IPv4 too; "unix:/run/kova.sock". Port 0 takes any free one.
struct ListenAddress {
  sockaddr_storage address{};
  socklen_t length = 0;

  bool is_unix() const { return address.ss_family == AF_UNIX; }
  // True if only this machine can reach it over IP.
  bool is_loopback() const;
  // "http://127.0.0.1:9848", or "unix:/run/kova.sock".
  std::string url() const;
};

// Throws std::invalid_argument, whose text says what is wrong. Names other than "localhost" are
// refused: whom they expose the exporter to would be for the name server to say.
ListenAddress parse_listen_address(std::string_view text);

// Which file a path leads to, whatever it is called.
struct FileIdentity {
  dev_t device;
  ino_t inode;
  bool operator==(const FileIdentity&) const = default;
};

// A listening socket, non-blocking; a Unix socket's file is removed at the end if it is still the
// one that this socket made.
class Listener {
 public:
  // Throws std::system_error. A Unix socket that nobody listens on any more is replaced.
  explicit Listener(const ListenAddress& address);
  ~Listener();
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;

  int descriptor() const { return descriptor_; }
  // With the port that was taken.
  const ListenAddress& address() const { return address_; }
  // For a process that ends without destructors.
  void remove_file() const;

 private:
  void bind_socket();

  ListenAddress address_;
  int descriptor_ = -1;
  std::optional<FileIdentity> file_;  // a Unix socket's, once it is there
};

}  // namespace kova_exporter
