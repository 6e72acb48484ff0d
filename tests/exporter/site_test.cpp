// What each path answers, without a socket; and the history behind it.
#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <cmath>
#include <ctime>
#include <regex>

#include "tests/exporter/sample.h"
#include "tools/exporter/site.h"

namespace kova_exporter {
namespace {

HttpRequest get(std::string target) {
  HttpRequest request;
  request.method = "GET";
  request.target = std::move(target);
  request.hosts = {"localhost:9848"};
  return request;
}

// The value of a header besides the usual ones, "" without it; of several the first.
std::string header(const HttpResponse& response, std::string_view name) {
  const auto match = std::find_if(response.extra.begin(), response.extra.end(),
                                  [name](const auto& entry) { return entry.first == name; });
  return match == response.extra.end() ? "" : match->second;
}

// Without the only number that differs between two answers.
std::string ageless(const std::string& text) {
  return std::regex_replace(text, std::regex("(age(\":|_seconds ))[0-9.e+-]+"), "$1");
}

class SiteTest : public testing::Test {
 protected:
  std::string body(const std::string& target) {
    return std::string(site_.answer(get(target)).text());
  }

  Store store_{5};
  Site site_{store_, {.machine = {.name = "bus", .simulated = ""}, .local_hosts_only = true}};
};

TEST_F(SiteTest, AnswersEachRequestWithItsStatus) {
  store_.publish(sample_sweep(1, 0), nullptr);
  struct Case {
    int status;
    std::string target;
    void (*change)(HttpRequest&) = [](HttpRequest&) {};
  };
  std::string items64 = "item=fan%201";
  for (int i = 0; i < 21; ++i) {
    items64 += "&item=F/P/*";  // three of them
  }
  const Case cases[] = {
      {200, "/"},
      {200, "/metrics"},
      {200, "/healthz"},
      {200, "/api/v1/items"},
      {200, "/api/v1/items/0x14170311"},
      {200, "/api/v1/items/fan%201"},
      {200, "/api/v1/events"},
      {200, "/api/v1/history?since=-10&item=fan%202&unknown=1"},
      {200, "/metrics", [](HttpRequest& r) { r.method = "HEAD"; }},
      {200, "/metrics", [](HttpRequest& r) { r.hosts.clear(), r.http_1_0 = true; }},
      {400, "/metrics", [](HttpRequest& r) { r.hosts.clear(); }},
      {400, "/metrics", [](HttpRequest& r) { r.hosts.push_back("localhost"); }},
      {403, "/metrics", [](HttpRequest& r) { r.hosts = {"evil.example"}; }},
      {405, "/metrics", [](HttpRequest& r) { r.method = "POST"; }},
      {405, "/nothing", [](HttpRequest& r) { r.method = "get"; }},
      {404, "/" + std::string(4095, 'a')},  // the bounds that are documented
      {414, "/" + std::string(4096, 'a')},
      {200, "/", [](HttpRequest& r) { r.headers = 64, r.header_bytes = 8192; }},
      {431, "/", [](HttpRequest& r) { r.headers = 65; }},
      {431, "/", [](HttpRequest& r) { r.header_bytes = 8193; }},
      {400, "/%ff"},
      {400, "/api/v1/history?since=x"},
      {400, "/api/v1/history?since=nan"},
      {200, "/api/v1/history?" + items64},
      {400, "/api/v1/history?item=fan%201&" + items64},
      {404, "/api/v1/items/"},
      {404, "/api/v1/items/0x1"},
      {404, "/api/v1/items/[f]an%201"},
      {200, "/api/v1/items/" + std::string(128, '*')},
      {400, "/api/v1/items/" + std::string(129, '*')},
      {400, "/api/v1/history?item=" + std::string(129, 'a')},
      {404, "/api/v1/items/fan"},
      {404, "/api/v1/history?item=0x1"},
      {404, "/api"},
      {404, "//"},
      {404, "/page.html/"},
      {404, "/../etc/passwd"},
  };
  for (const Case& c : cases) {
    HttpRequest request = get(c.target);
    c.change(request);
    const HttpResponse response = site_.answer(request);
    EXPECT_EQ(response.status, c.status) << request.method << ' ' << c.target;
    if (c.status >= 400) {
      EXPECT_NE(response.text().find(R"({"ok":false,"error":{"message":")"), std::string::npos);
    }
  }
}

TEST_F(SiteTest, SaysWhatAnAnswerIsAndHowLongItHolds) {
  store_.publish(sample_sweep(1, 0), nullptr);
  const std::string file = "; Cache-Control: no-cache; Vary: Accept-Encoding";
  const std::string fresh = "; Cache-Control: no-store";
  const std::string packed = fresh + "; Vary: Accept-Encoding";
  const std::pair<const char*, std::string> cases[] = {
      {"/", "text/html; charset=utf-8" + file},
      {"/page.css", "text/css; charset=utf-8" + file},
      {"/metrics", "text/plain; version=0.0.4; charset=utf-8" + packed + "; Vary: Accept"},
      {"/healthz", "text/plain; charset=utf-8" + fresh},
      {"/api/v1/items", "application/json" + packed},
      {"/api/v1/items/fan%201", "application/json" + fresh},
      {"/api/v1/history", "application/json" + packed},
      {"/api/v1/history?since=0", "application/json" + fresh},
      {"/api/v1/events", "text/event-stream" + fresh},
      {"/nothing", "application/json"},
      {"/post", "application/json; Allow: GET, HEAD"},
  };
  for (const auto& [target, headers] : cases) {
    HttpRequest request = get(target);
    request.method = request.target == "/post" ? "POST" : "GET";
    const HttpResponse response = site_.answer(request);
    std::string found = response.content_type;
    for (const auto& [name, value] : response.extra) {
      found += name == "ETag" ? "" : "; " + name + ": " + value;
    }
    EXPECT_EQ(found, headers) << target;
    EXPECT_EQ(response.event_stream, request.target == "/api/v1/events");
    EXPECT_EQ(response.text().empty(), response.event_stream);
  }
  EXPECT_EQ(
      body("/nothing"),
      "{\"ok\":false,\"error\":{\"message\":\"there is nothing here\",\"http_status\":404}}\n");
}

TEST_F(SiteTest, HistoryGoesBackAsFarAsIsAskedFor) {
  const auto now = static_cast<double>(std::time(nullptr));
  for (int i = 0; i < 70; ++i) {  // ten seconds apart, the last one just now
    auto snapshot = sample_sweep(1, 0);
    snapshot->time = now - 690 + 10 * i;
    const kova_page::RecentSamples::Row row = {{kFan, i}};
    store_.publish(std::move(snapshot), &row);
  }
  const std::pair<std::string, int> cases[] = {
      {"", 60},          {"?since=0", 60},      {"?item=fan%201", 70},
      {"?since=-55", 6}, {"?item=fan%202", 70}, {"?since=0&since=" + std::to_string(now - 75), 8}};
  for (const auto& [parameters, samples] : cases) {
    const std::string text = body("/api/v1/history" + parameters);
    const size_t times = text.find(R"("times":[)");
    EXPECT_EQ(std::count(&text[times], &text[text.find(']', times)], ','), samples - 1) << text;
    EXPECT_EQ(text.find("0x14170312") != std::string::npos, parameters == "?item=fan%202");
  }
}

TEST_F(SiteTest, FilesAreKnownByTheirTag) {
  const HttpResponse page = site_.answer(get("/"));
  EXPECT_EQ(page.content_type, "text/html; charset=utf-8");
  HttpRequest again = get("/");
  again.if_none_match = header(page, "ETag");
  EXPECT_EQ(site_.answer(again).status, 304);
  EXPECT_EQ(site_.answer(again).text(), "");
  again.target = "/page.css";
  EXPECT_EQ(site_.answer(again).status, 200);
  // The compressed form is another one.
  again.target = "/";
  again.accept_encoding = "gzip";
  const HttpResponse compressed = site_.answer(again);
  EXPECT_EQ(compressed.status, 200);
  again.if_none_match = header(compressed, "ETag");
  EXPECT_EQ(site_.answer(again).status, 304);
  again.accept_encoding = "";
  EXPECT_EQ(site_.answer(again).status, 200);
}

// The text in a gzip file that has to be whole, and the only one.
std::string unzipped(std::string_view file) {
  constexpr int kGzipOnly = 16 + MAX_WBITS;
  std::string text(1 << 20, '\0');
  z_stream stream{};
  EXPECT_EQ(inflateInit2(&stream, kGzipOnly), Z_OK);
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(file.data()));
  stream.avail_in = static_cast<uInt>(file.size());
  stream.next_out = reinterpret_cast<Bytef*>(text.data());
  stream.avail_out = static_cast<uInt>(text.size());
  EXPECT_EQ(inflate(&stream, Z_FINISH), Z_STREAM_END);
  EXPECT_EQ(stream.avail_in, 0U);
  text.resize(text.size() - stream.avail_out);
  inflateEnd(&stream);
  return text;
}

TEST(GzipFile, HoldsTextsOfAnySize) {
  constexpr size_t kBlock = 0xFFFF;  // the longest stored one
  for (const size_t size : {size_t{0}, size_t{1}, kBlock, kBlock + 1, 2 * kBlock}) {
    const std::string head(size, 'a');
    const std::string text = std::to_string(size) + std::string(size, 'b');
    const std::string tail(size, 'c');
    EXPECT_EQ(unzipped(gzip_file(head, deflated(text), tail)), head + text + tail) << size;
  }
  std::string noise;  // which does not become shorter
  for (uint32_t i = 0, word = 1; i < 100000; ++i, word = word * 1664525U + 1013904223U) {
    noise += static_cast<char>(word >> 24);
  }
  EXPECT_EQ(unzipped(gzip_file("", deflated(noise), "")), noise);
}

TEST_F(SiteTest, CompressesWhatIsLargeForClientsThatWantIt) {
  struct Case {
    const char* target;
    bool compresses;
  };
  for (const uint64_t sweep : {1U, 2U}) {  // nothing of the one before is left
    auto snapshot = sample_sweep(sweep, 1000);
    for (uint32_t id = 1; id <= 200; ++id) {
      auto list = std::make_shared<kova_page::ItemList>(*snapshot->list);
      list->items.push_back(list->items.front());
      list->items.back().id = id;
      snapshot->list = list;
      snapshot->readings[id] = {kova_host::Reading::State::good, 0,
                                static_cast<int64_t>(sweep * 1000 + id)};
    }
    kova_page::RecentSamples::Row row;
    for (uint32_t id = 1; id <= 200; ++id) {
      row[id] = static_cast<double>(sweep);
    }
    store_.publish(snapshot, &row);
    for (const Case& c :
         {Case{"/metrics", true}, Case{"/api/v1/items", true}, Case{"/api/v1/history", true},
          Case{"/dygraph.js", true}, Case{"/healthz", false}, Case{"/api/v1/items/fan%201", false},
          Case{"/api/v1/events", false}, Case{"/nothing", false}}) {
      HttpRequest request = get(c.target);
      const HttpResponse plain = site_.answer(request);
      request.accept_encoding = "deflate, gzip";
      const HttpResponse response = site_.answer(request);
      EXPECT_EQ(header(response, "Content-Encoding"), c.compresses ? "gzip" : "") << c.target;
      EXPECT_EQ(header(plain, "Content-Encoding"), "");
      if (!c.compresses) {
        EXPECT_EQ(response.text().find("\x1F\x8B"), std::string_view::npos) << c.target;
        continue;
      }
      for (const HttpResponse& either : {plain, response}) {
        EXPECT_EQ(header(either, "Vary"), "Accept-Encoding") << c.target;
      }
      EXPECT_LT(response.text().size() * 2, plain.text().size()) << c.target;
      EXPECT_EQ(ageless(unzipped(response.text())), ageless(std::string(plain.text())));
    }
  }
}

TEST_F(SiteTest, TellsValuesFailuresAndFreshness) {
  EXPECT_NE(body("/healthz").find("has not ended yet"), std::string::npos);
  const kova_page::RecentSamples::Row row = {{kFan, 3000}};
  store_.publish(sample_sweep(7, 0), &row);
  EXPECT_EQ(body("/healthz"), "ok\n");
  EXPECT_EQ(body("/api/v1/items").find(R"({"ok":false,"machine":{"name":"bus",)"), 0U);
  EXPECT_EQ(body("/api/v1/items/fan%201").find(R"({"ok":true,)"), 0U);
  const std::string metrics = body("/metrics");
  EXPECT_NE(metrics.find("\nkova_up 1\n"), std::string::npos);
  EXPECT_NE(metrics.find("\nkova_sweeps_total 7\n"), std::string::npos);
  EXPECT_NE(metrics.find(R"(item="fan 2",id="0x14170312"} 0)"), std::string::npos);
}

TEST_F(SiteTest, OldReadingsStayButAreNotUp) {
  for (const auto& [age, up] : {std::pair(14.5, true), {15.5, false}}) {
    store_.publish(sample_sweep(1, age), nullptr);
    EXPECT_EQ(site_.state().up, up) << age;
    EXPECT_EQ(site_.answer(get("/healthz")).status, up ? 200 : 503);
    const std::string metrics = body("/metrics");
    EXPECT_NE(metrics.find(up ? "\nkova_up 1\n" : "\nkova_up 0\n"), std::string::npos);
    EXPECT_NE(metrics.find("kova_fan_speed_rpm{"), std::string::npos);
  }
  auto lost = sample_sweep(2, 0);
  lost->error = "no device";
  store_.publish(std::move(lost), nullptr);
  EXPECT_EQ(body("/healthz"), "no device\n");
}

TEST(SweepState, SlowBusIsNotDown) {
  auto slow = sample_sweep(1, 50);
  slow->duration = 10;  // and a rest as long, at an interval of 1 s
  const auto state = kova_page::sweep_state(*slow, 1, std::chrono::steady_clock::now());
  EXPECT_TRUE(state.up);
  EXPECT_EQ(state.pace(), 20);
}

TEST(RecentSamples, IsARingOfColumns) {
  kova_page::RecentSamples history(3, 1);
  history.add(100, {{1, 10}});
  history.add(100.5, {{1, 99}});  // too soon after the one before
  history.add(101, {{1, 11}, {2, 20}});
  auto all = history.extract({1, 2, 3}, -1, 100);
  EXPECT_EQ(all.times, (std::vector<double>{100, 101}));
  EXPECT_EQ(all.series[1], (std::vector<double>{10, 11}));
  EXPECT_TRUE(std::isnan(all.series[2][0]) && all.series[2][1] == 20);
  EXPECT_TRUE(std::isnan(all.series[3][0]) && std::isnan(all.series[3][1]));
  history.add(102, {{2, 21}});
  history.add(103, {{2, 22}, {4, 40}});  // the first sample has left, and a column begins late
  all = history.extract({1, 2, 4}, -1, 100);
  EXPECT_EQ(all.times, (std::vector<double>{101, 102, 103}));
  EXPECT_EQ(all.series[1][0], 11);
  EXPECT_TRUE(std::isnan(all.series[1][1]) && std::isnan(all.series[1][2]));
  EXPECT_EQ(all.series[2], (std::vector<double>{20, 21, 22}));
  EXPECT_TRUE(std::isnan(all.series[4][0]) && all.series[4][2] == 40);
  EXPECT_EQ(history.ids(), (std::vector<uint32_t>{1, 2, 4}));
  history.add(104, {{2, 23}});
  EXPECT_EQ(history.ids(), (std::vector<uint32_t>{2, 4}));
  EXPECT_EQ(history.extract({2}, 102, 100).series[2], (std::vector<double>{22, 23}));
  EXPECT_EQ(history.extract({2}, -1, 1).series[2], (std::vector<double>{23}));
  history.add(103, {{2, 1}});  // the clock was set back
  EXPECT_EQ(history.extract({2}, -1, 1).series[2], (std::vector<double>{1}));
}

}  // namespace
}  // namespace kova_exporter
