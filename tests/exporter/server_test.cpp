// The server in the test's own process, with limits short enough to wait for.
#include "tools/exporter/server.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <atomic>
#include <thread>

#include "tests/exporter/sample.h"

namespace kova_exporter {
namespace {

// A client's end of a connection to a Unix socket.
class Client {
 public:
  explicit Client(const ListenAddress& address) : descriptor_(socket(AF_UNIX, SOCK_STREAM, 0)) {
    if (connect(descriptor_, reinterpret_cast<const sockaddr*>(&address.address), address.length) !=
        0) {
      ADD_FAILURE() << "cannot connect";
    }
  }
  ~Client() { close(descriptor_); }

  bool send(std::string_view text) const {
    return ::send(descriptor_, text.data(), text.size(), MSG_NOSIGNAL) ==
           static_cast<ssize_t>(text.size());
  }

  // Reads until `end` has come, or the connection has ended.
  std::string read_to(std::string_view end) const {
    std::string text;
    char byte = 0;
    while (!text.ends_with(end) && recv(descriptor_, &byte, 1, 0) == 1) {
      text += byte;
    }
    return text;
  }
  std::string read_all() const { return read_to("no such end"); }

 private:
  int descriptor_;
};

class ServerTest : public testing::Test {
 protected:
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

  Client client() const { return Client(listener_.address()); }

  static constexpr std::string_view kEvents = "GET /api/v1/events HTTP/1.1\r\nHost: x\r\n\r\n";
  const std::string path_ = "unix:" + testing::TempDir() + "exporter." + std::to_string(getpid());
  Listener listener_{parse_listen_address(path_)};
  Store store_{5};
  Site site_{store_, {}};
  std::unique_ptr<Server> server_;
  std::atomic<uint64_t> publish_ = 0;
  std::jthread thread_;
};

TEST_F(ServerTest, AnswersOneRequestAfterAnother) {
  start({});
  const Client one = client();
  for (int i = 0; i < 2; ++i) {
    EXPECT_TRUE(one.send("HEAD /api/v1/items HTTP/1.1\r\nHost: x\r\n\r\n"));
    const std::string head = one.read_to("\r\n\r\n");
    EXPECT_EQ(head.find("HTTP/1.1 200 OK\r\n"), 0U);
    EXPECT_NE(head.find("\r\nX-Content-Type-Options: nosniff\r\n"), std::string::npos);
    EXPECT_NE(head.find("\r\nContent-Security-Policy: default-src 'none'; "), std::string::npos);
  }
  EXPECT_TRUE(
      one.send("HEAD /page.js HTTP/1.1\r\nHost: x\r\nAccept-Encoding: br\r\n"
               "Accept-Encoding: gzip\r\n\r\n"));
  EXPECT_NE(one.read_to("\r\n\r\n").find("\r\nContent-Encoding: gzip\r\n"), std::string::npos);
  EXPECT_TRUE(one.send("POST / HTTP/1.1\r\nHost: x\r\nContent-Length: 1000000\r\n\r\n"));
  EXPECT_EQ(one.read_all().find("HTTP/1.1 405 "), 0U);  // and the connection ends, unread
}

TEST_F(ServerTest, AnswersTakeOnlySoMuchMemory) {
  start({.answer_bytes = 100});
  const Client one = client();
  EXPECT_TRUE(one.send("GET /metrics HTTP/1.1\r\nHost: x\r\n\r\n"));
  EXPECT_EQ(one.read_to("}}\n").find("HTTP/1.1 503 "), 0U);
  EXPECT_TRUE(one.send("GET /nothing HTTP/1.1\r\nHost: x\r\n\r\n"));
  EXPECT_EQ(one.read_to("}}\n").find("HTTP/1.1 404 "), 0U);
}

TEST_F(ServerTest, CutsOffSlowAndIdleClients) {
  start({.first_request = std::chrono::seconds(0), .next_request = std::chrono::seconds(0)});
  const Client slow = client();
  (void)slow.send("GET / HTTP/1.1\r\nHo");
  EXPECT_EQ(slow.read_all(), "");
}

TEST_F(ServerTest, StreamsGetTheNewestEventAndAreBounded) {
  start({.streams = 1, .quiet = std::chrono::seconds(1)});
  const Client stream = client();
  EXPECT_TRUE(stream.send(kEvents));
  EXPECT_NE(stream.read_to("\n\n\r\n").find("retry: 3000\n\n"), std::string::npos);
  EXPECT_NE(stream.read_to("\n\n\r\n").find("event: status\n"), std::string::npos);
  publish_ = 3;
  EXPECT_NE(stream.read_to("\n\n\r\n").find("event: sweep\nid: 3\n"), std::string::npos);
  EXPECT_NE(stream.read_to("\n\n\r\n").find("event: status\n"), std::string::npos);  // quiet
  const Client second = client();
  EXPECT_TRUE(second.send(kEvents));
  EXPECT_EQ(second.read_to("\r\n\r\n").find("HTTP/1.1 503 "), 0U);
  // The end of the server is the end of the stream.
  thread_.request_stop();
  (void)stream.read_all();
}

TEST_F(ServerTest, ASocketInUseIsRefusedAndALeftOneReplaced) {
  EXPECT_THROW(Listener(listener_.address()), std::system_error);
  const ListenAddress left = parse_listen_address(path_ + ".left");
  const int abandoned = socket(AF_UNIX, SOCK_STREAM, 0);
  ASSERT_EQ(bind(abandoned, reinterpret_cast<const sockaddr*>(&left.address), left.length), 0);
  close(abandoned);
  EXPECT_NO_THROW(Listener{left});
  EXPECT_NE(access((path_ + ".left").c_str() + 5, F_OK), 0);
}

}  // namespace
}  // namespace kova_exporter
