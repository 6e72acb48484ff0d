// What clients and administrators may write: requests, headers, addresses, command lines.
#include <gtest/gtest.h>

#include "include/kova_iot.h"
#include "tools/exporter/http.h"
#include "tools/exporter/listen_address.h"
#include "tools/exporter/options.h"

namespace kova_exporter {
namespace {

TEST(Target, IsDecodedOnce) {
  const auto target = parse_target("/a%2Fb/%25?item=PIC/a+b%2B&since=-5&&x&=y");
  ASSERT_TRUE(target);
  EXPECT_EQ(target->path, "/a/b/%");
  EXPECT_EQ(target->values("item"), std::vector<std::string_view>{"PIC/a b+"});
  EXPECT_EQ(target->values("since"), std::vector<std::string_view>{"-5"});
  EXPECT_EQ(target->values("x"), std::vector<std::string_view>{""});
  EXPECT_EQ(target->parameters.size(), 3U);
}

TEST(Target, IsRefusedUnlessUnderstoodWhole) {
  std::string many = "/?";
  for (int i = 0; i < 80; ++i) {
    many += "a&";
  }
  EXPECT_EQ(parse_target(many).value().parameters.size(), 80U);
  many += "a";
  for (const std::string& text :
       {std::string(), std::string("*"), std::string("http://localhost/"), std::string("/%"),
        std::string("/%4"), std::string("/%g0"), std::string("/%+1"), std::string("/%00"),
        std::string("/%1f"), std::string("/a\tb"), std::string("/%7f"), std::string("/%ff"),
        std::string("/?%c3"), "/" + std::string(4096, 'a'), many}) {
    EXPECT_FALSE(parse_target(text)) << text;
  }
}

TEST(Host, OnlyThisMachineIsLocal) {
  for (const char* host : {"localhost", "LocalHost:9848", "127.0.0.1", "127.1.2.3:80", "[::1]",
                           "[::1]:9848", "localhost:"}) {
    EXPECT_TRUE(is_local_host(host)) << host;
  }
  for (const char* host : {"", ":80", "evil.example", "localhost.evil.example", "127.0.0.1.nip.io",
                           "128.0.0.1", "[::2]", "[::1", "::1", "[::1]x", "localhost:80x",
                           "localhost:80:80", "127.0.0.1 ", "0.0.0.0"}) {
    EXPECT_FALSE(is_local_host(host)) << host;
  }
}

TEST(Accept, AsksForOpenMetricsByWeight) {
  for (const char* accept :
       {"application/openmetrics-text", "Application/OpenMetrics-Text; version=1.0.0, text/plain",
        "application/openmetrics-text;version=1.0.0;q=0.75,text/plain;version=0.0.4;q=0.5,*/"
        "*;q=0.1"}) {
    EXPECT_TRUE(prefers_openmetrics(accept)) << accept;
  }
  for (const char* accept :
       {"", "*/*", "text/plain", "application/openmetrics-text;q=0",
        "application/openmetrics-text;q=0.1, text/plain", "application/openmetrics-text;q=x",
        "application/openmetrics-text;q=7"}) {
    EXPECT_FALSE(prefers_openmetrics(accept)) << accept;
  }
}

TEST(AcceptEncoding, AllowsGzipByWeight) {
  for (const char* header : {"gzip", "gzip, deflate, br, zstd", "br, GZip;q=0.001", "x-gzip", "*",
                             "identity;q=0.5, *;q=0.5", "deflate,gzip ; q=1.000, identity;q=0"}) {
    EXPECT_TRUE(accepts_gzip(header)) << header;
  }
  for (const char* header :
       {"", "identity", "br", "gzip;q=0", "gzip;Q=0", "gzip;q=0.000, *", "*;q=0", "gzipx",
        "gzip;q=0.5, identity", "gzip;q=2", "gzip;q=", "identity, *;q=0.9"}) {
    EXPECT_FALSE(accepts_gzip(header)) << header;
  }
}

TEST(ListenAddress, SaysWhereAndWhetherOthersCanReachIt) {
  struct Case {
    const char* text;
    const char* url;
    bool loopback;
  };
  for (const Case& c :
       {Case{"127.0.0.1:9848", "http://127.0.0.1:9848", true},
        Case{"localhost:1", "http://127.0.0.1:1", true},
        Case{"[::1]:65535", "http://[::1]:65535", true},
        Case{"[::ffff:127.0.0.1]:80", "http://[::ffff:127.0.0.1]:80", true},
        Case{"[::]:0", "http://[::]:0", false}, Case{":80", "http://[::]:80", false},
        Case{"10.1.2.3:80", "http://10.1.2.3:80", false},
        Case{"126.0.0.1:80", "http://126.0.0.1:80", false},
        Case{"127.255.0.1:80", "http://127.255.0.1:80", true},
        Case{"[::ffff:126.0.0.1]:80", "http://[::ffff:126.0.0.1]:80", false},
        Case{"[2001:db8::7f00:1]:80", "http://[2001:db8::7f00:1]:80", false},
        Case{"unix:/run/a b", "unix:/run/a b", false}}) {
    const ListenAddress address = parse_listen_address(c.text);
    EXPECT_EQ(address.url(), c.url);
    EXPECT_EQ(address.is_loopback(), c.loopback) << c.text;
  }
}

TEST(ListenAddress, RefusesWhatIsNone) {
  using namespace std::string_literals;
  const std::string longest = "unix:/" + std::string(106, 'a');
  EXPECT_EQ(parse_listen_address(longest).url(), longest);
  for (const std::string& text :
       {""s, "9848"s, "127.0.0.1"s, "[::1]"s, "127.0.0.1:"s, "127.0.0.1:65536"s, "127.0.0.1:-1"s,
        "127.0.0.1:8o"s, "example.org:80"s, "::1:80"s, "[::1:80"s, "::1]:80"s, "[127.0.0.1]:80"s,
        "256.0.0.1:80"s, "unix:"s, "unix:run/a"s, "unix:/a\0b"s, longest + "a"}) {
    EXPECT_THROW(parse_listen_address(text), std::invalid_argument) << text;
  }
}

TEST(Options, AreCheckedBeforeAnythingStarts) {
  const auto parsed = parse_options({"--interval", "250ms", "--simulate", "--log.level=warn"});
  EXPECT_EQ(parsed.options.interval, 0.25);
  EXPECT_EQ(parsed.options.connections_per_address, 16U);
  EXPECT_EQ(parsed.options.simulated, "built-in");
  EXPECT_TRUE(parsed.options.host.simulate);
  EXPECT_EQ(parsed.options.log_level, LogLevel::warn);
  EXPECT_EQ(parsed.options.listen_address.url(), "http://127.0.0.1:9848");
  EXPECT_EQ(parse_options({"--simulate", "x/y.json"}).options.simulated, "y");
  EXPECT_EQ(parse_options({"--simulate", "x/y.json"}).options.host.machine, "x/y.json");
  const Options usual = parse_options({"--module", "m.so"}).options;
  EXPECT_EQ(usual.host.module, "m.so");
  EXPECT_TRUE(usual.interval == 5 && usual.log_level == LogLevel::info && !usual.host.simulate);
  for (const auto& [text, seconds] :
       {std::pair("100ms", 0.1), {"2", 2.0}, {"1.5s", 1.5}, {"60m", 3600.0}}) {
    EXPECT_DOUBLE_EQ(parse_options({"--interval", text}).options.interval, seconds) << text;
  }
  EXPECT_EQ(parse_options({"--version"}).answer, "kova-exporter " KOVA_IOT_VERSION "\n");
  for (const std::vector<std::string>& wrong : {std::vector<std::string>{"--interval", "0"},
                                                {"--interval", "99ms"},
                                                {"--web.connections-per-address", "0"},
                                                {"--web.connections-per-address", "129"},
                                                {"--web.connections-per-address", "4.5"},
                                                {"--interval", "3600.1"},
                                                {"--interval", "61m"},
                                                {"--interval", "5h"},
                                                {"--interval", ""},
                                                {"--log.level", "loud"},
                                                {"--nonsense"},
                                                {"list"},
                                                {"--web.listen-address", "here"}}) {
    EXPECT_THROW(parse_options(wrong), std::invalid_argument) << wrong.front();
  }
}

}  // namespace
}  // namespace kova_exporter
