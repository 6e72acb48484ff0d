// The server in the test's own process, with limits short enough to wait for.
#include "tools/exporter/server.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <fstream>
#include <thread>

#include "tests/exporter/sample.h"
#include "tools/exporter/pulse.h"

namespace kova_exporter {
namespace {

// A client's end of a connection to a Unix socket.
class TestClient {
 public:
  explicit TestClient(const ListenAddress& address)
      : descriptor_(socket(address.address.ss_family, SOCK_STREAM, 0)) {
    if (connect(descriptor_, reinterpret_cast<const sockaddr*>(&address.address), address.length) !=
        0) {
      ADD_FAILURE() << "cannot connect";
    }
    constexpr timeval kPatience{.tv_sec = 10, .tv_usec = 0};
    setsockopt(descriptor_, SOL_SOCKET, SO_RCVTIMEO, &kPatience, sizeof(kPatience));
  }
  ~TestClient() { close(descriptor_); }

  bool send(std::string_view text) const {
    return ::send(descriptor_, text.data(), text.size(), MSG_NOSIGNAL) ==
           static_cast<ssize_t>(text.size());
  }

  // Reads until `end` has come, or the connection has ended. What comes behind it stays to be read.
  std::string read_to(std::string_view end) const {
    std::string text;
    std::array<char, 16384> bytes;
    ssize_t size = 0;
    while (!text.ends_with(end) &&
           (size = recv(descriptor_, bytes.data(), bytes.size(), MSG_PEEK)) > 0) {
      const size_t before = text.size();
      text.append(bytes.data(), static_cast<size_t>(size));
      const size_t found = text.find(end, before - std::min(before, end.size() - 1));
      text.resize(found == std::string::npos ? text.size() : found + end.size());
      (void)recv(descriptor_, bytes.data(), text.size() - before, 0);
    }
    return text;
  }
  std::string read_all() const { return read_to("no such end"); }

  // What a request without a body gets, up to `end`.
  std::string ask(const std::string& request, std::string_view end) const {
    EXPECT_TRUE(send(request + "\r\nHost: x\r\n\r\n"));
    return read_to(end);
  }
  void hang_up(int how = SHUT_RDWR) const { shutdown(descriptor_, how); }

  bool has_answer() const {
    char byte = 0;
    return recv(descriptor_, &byte, 1, MSG_PEEK | MSG_DONTWAIT) == 1;
  }

  // True if the server has ended the connection, within the patience that a test has.
  bool is_ended() const {
    char byte = 0;
    return recv(descriptor_, &byte, 1, 0) == 0;
  }

 private:
  int descriptor_;
};

class ServerTest : public testing::Test {
 protected:
  explicit ServerTest(const std::string& address = kPath)
      : listener_(parse_listen_address(address)) {}

  void start(ServerLimits limits) {
    server_ = std::make_unique<Server>(listener_, site_, limits);
    thread_ = std::jthread([this](const std::stop_token& stop) {
      while (!stop.stop_requested()) {
        pollfd descriptor{server_->descriptor(), POLLIN, 0};
        poll(&descriptor, 1, 20);
        if (const auto number = publish_.exchange(0)) {
          store_.publish(sample_sweep(number, 0), nullptr);
          server_->announce(site_.newest_event());
        }
        server_->serve();
      }
      server_.reset();
    });
  }

  void TearDown() override {
    if (thread_.joinable()) {
      thread_.request_stop();
    }
  }

  // Long enough for the server to look at its clients several times.
  static void rest() { std::this_thread::sleep_for(std::chrono::milliseconds(60)); }

  // A sweep that no socket holds.
  void publish_large() {
    auto snapshot = sample_sweep(1, 0);
    auto list = std::make_shared<kova_page::ItemList>(*snapshot->list);
    list->items.resize(300, list->items.front());
    snapshot->list = list;
    snapshot->readings[kFan].value = std::string(1000, 'x');
    store_.publish(std::move(snapshot), nullptr);
  }

  TestClient client() const { return TestClient(listener_.address()); }

  static constexpr std::string_view kItems = "GET /api/v1/items HTTP/1.1\r\nHost: x\r\n\r\n";
  static constexpr std::string_view kEvents = "GET /api/v1/events HTTP/1.1\r\nHost: x\r\n\r\n";
  static inline const std::string kPath =
      "unix:" + testing::TempDir() + "exporter." + std::to_string(getpid());
  Listener listener_;
  Store store_{5};
  Site site_{store_, {}};
  std::unique_ptr<Server> server_;
  std::atomic<uint64_t> publish_ = 0;
  std::jthread thread_;
};

TEST_F(ServerTest, AnswersOneRequestAfterAnother) {
  start({});
  const TestClient one = client();
  for (int i = 0; i < 2; ++i) {
    EXPECT_TRUE(one.send("HEAD /api/v1/items HTTP/1.1\r\nHost: x\r\n\r\n"));
    const std::string head = one.read_to("\r\n\r\n");
    EXPECT_EQ(head.find("HTTP/1.1 200 OK\r\n"), 0U);
    for (const char* header :
         {"X-Content-Type-Options: nosniff", "Referrer-Policy: no-referrer",
          "Cross-Origin-Resource-Policy: same-origin", "Cache-Control: no-store",
          "Content-Type: application/json",
          "Content-Security-Policy: default-src 'none'; script-src 'self'; "}) {
      EXPECT_NE(head.find(std::string("\r\n") + header), std::string::npos) << head;
    }
  }
  EXPECT_TRUE(
      one.send("HEAD /page.js HTTP/1.1\r\nHost: x\r\nAccept-Encoding: gzip\r\n"
               "Accept-Encoding: br\r\n\r\n"));
  EXPECT_NE(one.read_to("\r\n\r\n").find("\r\nContent-Encoding: gzip\r\n"), std::string::npos);
  // The connection ends, and the body is not read.
  EXPECT_EQ(one.ask("POST / HTTP/1.1\r\nContent-Length: 1000000", "no end").substr(9, 3), "405");
}

TEST_F(ServerTest, HandsRequestsOverAsTheyAre) {
  EXPECT_EQ(Server(listener_, site_).patience(), std::chrono::seconds(1));
  start({});
  const std::string page = client().ask("GET / HTTP/1.1", "</html>\n");
  const std::string tag = page.substr(page.find("ETag: ") + 6, 18);
  const std::string filler(8192 - 5 - 15 - 1, 'y');  // beside the other headers of all
  std::string headers;
  for (int i = 0; i < 62; ++i) {
    headers += "\r\nA: b";
  }
  for (const auto& [request, status] : {
           std::pair("GET /healthz?%41 HTTP/1.1" + headers, "503"),
           {"GET /healthz HTTP/1.1\r\nB: c" + headers, "431"},
           {"GET /healthz HTTP/1.1\r\nz: " + filler, "503"},
           {"GET /healthz HTTP/1.1\r\nzz: " + filler, "431"},
           {"GET /%ff HTTP/1.1", "400"},
           {"GET /healthz HTTP/1.1\r\nHost: x", "400"},
           {"GET / HTTP/1.1\r\nIf-None-Match: " + tag, "304"},
           {"GET / HTTP/1.1\r\nIf-None-Match: \"x\"", "200"},
           {"POST / HTTP/1.1\r\nTransfer-Encoding: chunked", "405"},
       }) {
    EXPECT_EQ(client().ask(request + "\r\nConnection: close", "no end").substr(9, 3), status);
  }
  const TestClient old = client();
  EXPECT_TRUE(old.send("GET /healthz HTTP/1.0\r\n\r\n"));
  EXPECT_EQ(old.read_all().substr(9, 3), "503");
  // A header that stands twice is one list.
  (void)client().ask("GET /metrics HTTP/1.1\r\nAccept: a/b\r\nAccept: application/openmetrics-text",
                     "\n# EOF\n");
}

TEST_F(ServerTest, AnswersTakeOnlySoMuchMemory) {
  publish_large();
  start({.answer_bytes = 512 * 1024});
  for (int i = 0; i < 2; ++i) {
    const TestClient slow = client();
    EXPECT_TRUE(slow.send(kItems));
    rest();
    const std::string refusal = client().ask("GET /api/v1/items HTTP/1.1", "}}\n");
    EXPECT_EQ(refusal.find("HTTP/1.1 503 "), 0U);
    EXPECT_NE(refusal.find("\r\nRetry-After: 10\r\n"), std::string::npos);
    EXPECT_EQ(client().ask("GET /nothing HTTP/1.1", "}}\n").find("HTTP/1.1 404 "), 0U);
    EXPECT_GT(slow.read_to("\n}").size(), 300'000U);  // whole, and there is room again
  }
}

TEST_F(ServerTest, CutsOffSlowAndIdleClients) {
  constexpr std::chrono::seconds kNone(0);
  const std::pair<ServerLimits, int> cases[] = {{{}, 4},
                                                {{.first_request = kNone}, 0},
                                                {{.answer = kNone}, 1},
                                                {{.next_request = kNone}, 2},
                                                {{.event = kNone}, 3}};
  publish_large();
  for (const auto& [limits, steps] : cases) {
    start(limits);
    const TestClient slow = client();
    rest();
    (void)slow.send(kItems);
    rest();
    const std::string answer = slow.read_to("\n}");
    rest();
    (void)slow.send(kEvents);
    rest();
    const std::string event = slow.read_to("}}\n\n\r\n");
    EXPECT_EQ(
        !answer.empty() + answer.ends_with("}") + !event.empty() + event.ends_with("}}\n\n\r\n"),
        steps);
    TearDown();
    thread_.join();
  }
}

// The same over IP, where clients have addresses.
class ServerOverIpTest : public ServerTest {
 protected:
  ServerOverIpTest() : ServerTest("127.0.0.1:0") {}
};

TEST_F(ServerOverIpTest, TheLongestIdleOfOneAddressMakesRoom) {
  start({.connections = 4, .connections_per_address = 2});
  const TestClient stream = client();
  (void)stream.ask("GET /api/v1/events HTTP/1.1", "}}\n\n\r\n");
  const TestClient idle = client();
  rest();
  const TestClient newest = client();
  EXPECT_TRUE(idle.is_ended());
  EXPECT_NE(newest.ask("GET /healthz HTTP/1.1", "\r\n\r\n"), "");
  publish_ = 3;
  EXPECT_NE(stream.read_to("\n\n\r\n"), "");  // which waits for something, and stays
}

TEST_F(ServerTest, TheLongestIdleOfAllMakesRoom) {
  start({.connections = 3, .connections_per_address = 1});
  const TestClient first = client();
  const TestClient second = client();
  rest();
  EXPECT_NE(first.ask("GET /healthz HTTP/1.1", "\r\n\r\n"), "");
  const TestClient third = client();
  rest();
  const TestClient fourth = client();
  EXPECT_TRUE(second.is_ended());
  EXPECT_NE(fourth.ask("GET /healthz HTTP/1.1", "\r\n\r\n"), "");
}

TEST_F(ServerTest, WhatIsMadeForOneWaitsForOthers) {
  store_.publish(sample_sweep(1, 0), nullptr);
  Server server(listener_, site_);
  std::vector<std::unique_ptr<TestClient>> clients;
  for (size_t i = 0; i < 5; ++i) {
    clients.push_back(std::make_unique<TestClient>(listener_.address()));
    // With a body, too, and where a letter is encoded.
    EXPECT_TRUE(clients[i]->send(i == 4   ? "GET /healthz HTTP/1.1\r\nHost: x\r\n\r\n"
                                 : i == 3 ? "GET /%61pi/v1/items/* HTTP/1.1\r\nHost: x\r\n"
                                            "Content-Length: 1\r\n\r\n"
                                          : "GET /api/v1/items/* HTTP/1.1\r\nHost: x\r\n\r\n"));
  }
  std::vector<size_t> order;
  for (int turn = 0; turn < 100 && order.size() < clients.size(); ++turn) {
    server.serve();
    for (size_t i = 0; i < clients.size(); ++i) {
      if (clients[i]->has_answer() && std::count(order.begin(), order.end(), i) == 0) {
        order.push_back(i);
      }
    }
  }
  EXPECT_EQ(order, (std::vector<size_t>{4, 0, 1, 2, 3}));
}

TEST_F(ServerTest, WhoHangsUpHalfWayIsGoneAtOnce) {
  start({.first_request = std::chrono::hours(1)});
  for (const std::string_view half : {"", "GET /heal", "GET /healthz HTTP/1.1\r\nHo"}) {
    const TestClient hasty = client();
    EXPECT_TRUE(hasty.send(half));
    hasty.hang_up(SHUT_WR);
    EXPECT_TRUE(hasty.is_ended()) << half;
  }
  const TestClient whole = client();
  EXPECT_TRUE(whole.send("GET /healthz HTTP/1.0\r\n\r\n"));
  whole.hang_up(SHUT_WR);
  EXPECT_NE(whole.read_all(), "");
}

TEST_F(ServerTest, OnlyAServerThatAnswersHasAPulse) {
  Server server(listener_, site_, {.connections = 1});
  Pulse pulse(server, {});
  const auto beats = [&](int turns, bool serve) {
    int count = 0;
    for (int i = 0; i < turns; ++i) {
      count += pulse.beat() ? 1 : 0;
      if (serve) {
        server.serve();
      }
    }
    return count;
  };
  EXPECT_EQ(beats(20, false), 0);
  EXPECT_GT(beats(40, true), 2);
  const TestClient one = client();  // who makes room for the pulse, being idle
  EXPECT_GT(beats(40, true), 2);
  Pulse later(server, std::chrono::hours(1));
  while (!later.beat()) {
    server.serve();
  }
  server.serve();
  EXPECT_FALSE(later.beat() || later.beat());
}

TEST_F(ServerTest, StreamsGetTheNewestEventAndAreBounded) {
  start({.streams = 1, .quiet = std::chrono::seconds(1)});
  const TestClient stream = client();
  EXPECT_TRUE(stream.send(kEvents));
  EXPECT_NE(stream.read_to("\n\n\r\n").find("retry: 3000\n\n"), std::string::npos);
  EXPECT_NE(stream.read_to("\n\n\r\n").find("event: status\n"), std::string::npos);
  publish_ = 3;
  EXPECT_NE(stream.read_to("\n\n\r\n").find("event: sweep\nid: 3\n"), std::string::npos);
  EXPECT_NE(stream.read_to("\n\n\r\n").find("event: status\n"), std::string::npos);  // quiet
  const std::string head = "HEAD /api/v1/events HTTP/1.1";
  EXPECT_EQ(client().ask(head, "\r\n\r\n").find("HTTP/1.1 200 "), 0U);  // which is no stream
  const TestClient second = client();
  EXPECT_EQ(second.ask("GET /api/v1/events HTTP/1.1", "}}\n").find("HTTP/1.1 503 "), 0U);
  stream.hang_up();
  publish_ = 4;
  rest();
  EXPECT_TRUE(second.send(kEvents));
  EXPECT_NE(second.read_to("\n\n\r\n").find("retry: 3000\n\n"), std::string::npos);
  // The end of the server is the end of the stream.
  thread_.request_stop();
  (void)second.read_all();
}

TEST_F(ServerTest, ASocketInUseIsRefusedAndALeftOneReplaced) {
  EXPECT_THROW(Listener(listener_.address()), std::system_error);
  EXPECT_EQ(access(kPath.c_str() + 5, F_OK), 0);
  const std::string file = kPath.substr(5) + ".left";
  const ListenAddress left = parse_listen_address("unix:" + file);
  std::ofstream(file) << "no socket";
  EXPECT_THROW(Listener{left}, std::system_error);
  EXPECT_EQ(unlink(file.c_str()), 0);  // it was left alone
  const int abandoned = socket(AF_UNIX, SOCK_STREAM, 0);
  ASSERT_EQ(bind(abandoned, reinterpret_cast<const sockaddr*>(&left.address), left.length), 0);
  close(abandoned);
  {
    const Listener listener{left};
    EXPECT_EQ(access(file.c_str(), F_OK), 0);
    EXPECT_TRUE(fcntl(listener.descriptor(), F_GETFD) & FD_CLOEXEC);
    EXPECT_TRUE(fcntl(listener.descriptor(), F_GETFL) & O_NONBLOCK);
  }
  EXPECT_NE(access(file.c_str(), F_OK), 0);
  // What has taken the path meanwhile is another listener's, and stays.
  {
    auto first = std::make_unique<Listener>(left);
    EXPECT_EQ(unlink(file.c_str()), 0);
    const Listener successor{left};
    first.reset();
    EXPECT_EQ(access(file.c_str(), F_OK), 0);
  }
  EXPECT_NE(access(file.c_str(), F_OK), 0);
}

TEST(Listener, TakesAFreePortAndLeavesItAtOnce) {
  const bool has_ipv6 = std::ifstream("/proc/net/if_inet6").peek() != EOF;
  for (const std::string host : {"127.0.0.1", "[::1]", "[::ffff:127.0.0.1]"}) {
    if (host.front() == '[' && !has_ipv6) {
      continue;
    }
    ListenAddress address = parse_listen_address(host + ":0");
    {
      const Listener one(address);
      address = one.address();
      EXPECT_GT(address.url(), "http://" + host + ":0");
      EXPECT_THROW(Listener{address}, std::system_error);
      // A connection that this side ends first.
      const int client = socket(address.address.ss_family, SOCK_STREAM, 0);
      ASSERT_EQ(
          connect(client, reinterpret_cast<const sockaddr*>(&address.address), address.length), 0);
      close(accept(one.descriptor(), nullptr, nullptr));
      close(client);
    }
    EXPECT_NO_THROW(Listener{address});
  }
}

}  // namespace
}  // namespace kova_exporter
