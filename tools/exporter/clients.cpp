// Connections and their ends.
#include "tools/exporter/clients.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <tuple>

#include "tools/exporter/log.h"

namespace kova_exporter {
namespace {

using Clock = Client::Clock;

template <typename Address>
const Address& as(const sockaddr_storage& address) {
  return reinterpret_cast<const Address&>(address);
}

// As a number in text. An IPv4 client of an IPv6 socket is the same as on one of its own.
std::string peer_address(int descriptor) {
  sockaddr_storage address{};
  socklen_t length = sizeof(address);
  char text[INET6_ADDRSTRLEN] = "";
  if (getpeername(descriptor, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
    return "";
  }
  if (address.ss_family == AF_INET) {
    inet_ntop(AF_INET, &as<sockaddr_in>(address).sin_addr, text, sizeof(text));
  } else if (address.ss_family == AF_INET6) {
    const in6_addr& ip = as<sockaddr_in6>(address).sin6_addr;
    constexpr size_t kIpv4 = 12;  // where the embedded address begins
    if (IN6_IS_ADDR_V4MAPPED(&ip)) {
      inet_ntop(AF_INET, &ip.s6_addr[kIpv4], text, sizeof(text));
    } else {
      inet_ntop(AF_INET6, &ip, text, sizeof(text));
    }
  }
  return text;
}

size_t unread_bytes(const Client& client) {
  int bytes = 0;
  return ioctl(client.descriptor, FIONREAD, &bytes) == 0 ? static_cast<size_t>(bytes) : 0;
}

void end(Client& client) {
  shutdown(client.descriptor, SHUT_RDWR);
  client.is_ended = true;
}

// Who waits for nothing but its own next request goes before one that is being answered.
bool is_longer_idle(const Client* a, const Client* b) {
  return std::tie(a->is_answered, a->active) < std::tie(b->is_answered, b->active);
}

}  // namespace

void Client::begin_answer(Clock::time_point until) {
  is_answered = true;
  active = Clock::now();
  deadline = until;
}

void Client::end_answer(Clock::time_point until) {
  begin_answer(until);
  is_answered = false;
}

Client* Clients::add(int descriptor, Clock::time_point deadline) {
  auto client = std::make_unique<Client>();
  client->descriptor = descriptor;
  client->address = peer_address(descriptor);
  client->deadline = deadline;
  clients_.push_back(std::move(client));
  is_checked_ = false;
  return clients_.back().get();
}

void Clients::remove(const Client* client) {
  std::erase_if(clients_, [client](const auto& one) { return one.get() == client; });
}

void Clients::cut_off() {
  const auto now = Clock::now();
  for (const auto& client : clients_) {
    if (!client->is_ended && now > client->deadline) {
      log(LogLevel::debug, "a client was too slow");
      end(*client);
    }
  }
  end_half_requests();
  if (is_checked_) {
    return;
  }
  is_checked_ = true;
  std::map<std::string, std::vector<Client*>> by_address;
  std::vector<Client*> all;
  for (const auto& client : clients_) {
    all.push_back(client.get());
    if (!client->address.empty()) {
      by_address[client->address].push_back(client.get());
    }
  }
  for (auto& [address, clients] : by_address) {
    end_surplus(std::move(clients), limits_.connections_per_address, address);
  }
  end_surplus(std::move(all), limits_.connections, "all clients together");
}

// Where the end of a connection comes along with the beginning of a request, the HTTP library sees
// only that there is no more to read for now, and would wait for the rest until the deadline.
void Clients::end_half_requests() {
  std::vector<pollfd> waiting;
  std::vector<Client*> clients;
  for (const auto& client : clients_) {
    if (!client->is_ended && !client->is_answered) {
      waiting.push_back({client->descriptor, POLLRDHUP, 0});
      clients.push_back(client.get());
    }
  }
  if (poll(waiting.data(), waiting.size(), 0) <= 0) {
    return;
  }
  for (size_t i = 0; i < clients.size(); ++i) {
    if ((waiting[i].revents & POLLRDHUP) != 0 && unread_bytes(*clients[i]) == 0) {
      end(*clients[i]);
    }
  }
}

// Who has sent what nobody has read yet is not idle; the next turn reads it.
void Clients::end_surplus(std::vector<Client*> clients, size_t limit, const std::string& whose) {
  std::erase_if(clients, [](const Client* client) { return client->is_ended; });
  if (clients.size() <= limit) {
    return;
  }
  size_t surplus = clients.size() - limit;
  std::erase_if(clients, [](const Client* client) {
    return !client->is_answered && unread_bytes(*client) > 0;
  });
  std::sort(clients.begin(), clients.end(), &is_longer_idle);
  for (Client* client : clients) {
    if (surplus == 0) {
      break;
    }
    end(*client);
    surplus -= 1;
    untold_ += 1;
  }
  is_checked_ = is_checked_ && surplus == 0;
  tell(whose, limit);
}

// Whoever opens connections in a loop must not fill the log.
void Clients::tell(const std::string& whose, size_t limit) {
  constexpr std::chrono::minutes kBetweenLines{1};
  const auto now = Clock::now();
  if (untold_ == 0 || (told_ != Clock::time_point::min() && now - told_ < kBetweenLines)) {
    return;
  }
  log(LogLevel::warn, "{}: more than {} connections, {} ended that were idle for longest", whose,
      limit, untold_);
  untold_ = 0;
  told_ = now;
}

}  // namespace kova_exporter
