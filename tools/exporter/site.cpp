// What each path answers.
#include "tools/exporter/site.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <limits>
#include <variant>

#include "tools/host/export/metrics.h"
#include "tools/host/model/name_pattern.h"
#include "tools/host/model/selection.h"
#include "tools/host/system/errors.h"
#include "tools/host/system/plain_text.h"
#include "tools/host/system/typed_number.h"
#include "tools/host/system/unix_time.h"

namespace kova_exporter {
namespace {

constexpr size_t kHistoryItems = 64;
// The small lines of the page: enough to see, few enough for every item at once.
constexpr size_t kSamplesOfAllItems = 60;
constexpr double kEver = -std::numeric_limits<double>::infinity();

HttpResponse text_response(std::string type, std::string text) {
  HttpResponse response;
  response.content_type = std::move(type);
  response.body = std::make_shared<const std::string>(std::move(text));
  response.extra.emplace_back("Cache-Control", "no-store");
  return response;
}

HttpResponse json_response(std::string text) {
  return text_response("application/json", std::move(text));
}

// FNV-1a: a tag need only change when the text does.
std::string entity_tag(std::string_view text) {
  uint64_t hash = 14695981039346656037U;
  for (const char c : text) {
    hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211U;
  }
  return fmt::format("\"{:016x}\"", hash);
}

// Below this size headers and time outweigh what is saved.
constexpr size_t kWorthCompressing = 1024;

bool wants_gzip(const HttpRequest& request, size_t size) {
  return size >= kWorthCompressing && accepts_gzip(request.accept_encoding);
}

// `head` and `tail` are this answer's own; of `text` there is one for many answers.
HttpResponse shared_response(const HttpRequest& request, std::string type, std::string_view head,
                             SharedText& text, std::string_view tail) {
  const bool gzip = wants_gzip(request, text.plain().size());
  HttpResponse response =
      text_response(std::move(type), gzip ? gzip_file(head, text.compressed(), tail)
                                          : fmt::format("{}{}{}", head, text.plain(), tail));
  response.extra.emplace_back("Vary", "Accept-Encoding");
  if (gzip) {
    response.extra.emplace_back("Content-Encoding", "gzip");
  }
  return response;
}

// Unix time; negative numbers count back from now. Nothing for a text that is no number.
std::optional<double> since_time(std::string_view text) {
  const auto number = kova_host::parse_number(text);
  if (!number) {
    return std::nullopt;
  }
  const double seconds = kova_host::as_double(*number);
  return seconds < 0 ? kova_host::unix_time() + seconds : seconds;
}

// The items that a client asks for by ID, name, path or pattern, or the answer that there are none.
std::variant<std::vector<kova_host::Item>, HttpResponse> items_named(
    const kova_page::Snapshot& snapshot, std::string_view text) {
  if (text.size() > kova_host::kLongestItemText) {
    return error_response(
        400, fmt::format("an item's name has at most {} bytes", kova_host::kLongestItemText));
  }
  try {
    auto items = kova_host::named_items(snapshot.list->items, std::string(text));
    if (std::all_of(items.begin(), items.end(), [&snapshot](const kova_host::Item& item) {
          return snapshot.readings.contains(item.id);
        })) {
      return items;
    }
  } catch (const kova_host::HostError& error) {
    return error_response(404, error.what());
  }
  return error_response(404, fmt::format("this machine has no item '{}'", text));
}

struct WantedHistory {
  bool all = true;
  std::vector<uint32_t> ids;
  double since = kEver;
};

// What the parameters ask for, or the answer that something is wrong with them.
std::variant<WantedHistory, HttpResponse> wanted_history(const kova_page::Snapshot& snapshot,
                                                         const Target& target) {
  WantedHistory wanted;
  for (const std::string_view name : target.values("item")) {
    wanted.all = false;
    const auto found = items_named(snapshot, name);
    if (const auto* refusal = std::get_if<HttpResponse>(&found)) {
      return *refusal;
    }
    for (const kova_host::Item& item : std::get<std::vector<kova_host::Item>>(found)) {
      wanted.ids.push_back(item.id);
    }
    if (wanted.ids.size() > kHistoryItems) {
      return error_response(400, fmt::format("at most {} items at once", kHistoryItems));
    }
  }
  if (const auto values = target.values("since"); !values.empty()) {
    const auto time = since_time(values.back());
    if (!time) {
      return error_response(400, fmt::format("'{}' is no time in seconds", values.back()));
    }
    wanted.since = *time;
  }
  return wanted;
}

std::string items_metrics(const kova_page::Snapshot& snapshot, kova_host::MetricsFormat format) {
  const kova_host::EarlierMetrics earlier{.last_success = snapshot.last_success, .labels = {}};
  return kova_host::items_text(kova_host::distinct(snapshot.list->items), snapshot.readings,
                               snapshot.time, earlier, format);
}

kova_host::Sweep sweep_of(const kova_page::SweepState& state) {
  return {.up = state.up,
          .time = state.time,
          .duration = state.duration,
          .age = state.age,
          .interval = state.interval,
          .number_so_far = state.number};
}

// Nothing to object to, or the answer that says what.
std::optional<HttpResponse> objection(const HttpRequest& request, bool local_hosts_only) {
  if (request.target.size() > HttpLimits::kTarget) {
    return error_response(414, "the path and query are too long");
  }
  if (request.headers > HttpLimits::kHeaders || request.header_bytes > HttpLimits::kHeaderBytes) {
    return error_response(431, "the headers are too large");
  }
  if (request.hosts.size() > 1 || (request.hosts.empty() && !request.http_1_0)) {
    return error_response(400, "a request has one Host header");
  }
  if (local_hosts_only && !request.hosts.empty() && !is_local_host(request.hosts.front())) {
    return error_response(403, "only requests to this machine's own address are answered");
  }
  if (request.method != "GET" && request.method != "HEAD") {
    HttpResponse response = error_response(405, "the exporter only reads: use GET or HEAD");
    response.extra.emplace_back("Allow", "GET, HEAD");
    return response;
  }
  return std::nullopt;
}

}  // namespace

Site::Site(const Store& store, Options options) : store_(store), options_(std::move(options)) {}

Site::Current Site::current() const {
  auto snapshot = store_.latest();
  const kova_page::SweepState state =
      kova_page::sweep_state(*snapshot, store_.interval(), std::chrono::steady_clock::now());
  return {std::move(snapshot), state};
}

HttpResponse Site::answer(const HttpRequest& request) {
  if (auto refusal = objection(request, options_.local_hosts_only)) {
    return std::move(*refusal);
  }
  const auto target = parse_target(request.target);
  return target ? route(request, *target) : error_response(400, "the path or query is malformed");
}

// Every endpoint. A new one is its row here and what it answers; the pages that tell of it are
// checked against this.
std::span<const Site::Route> Site::routes() {
  static constexpr Route kRoutes[] = {
      {"/", "", "The live page", true,
       [](Site& site, const HttpRequest& request, const Target&) {
         return site.file(request, *kova_page::find_page_file("page.html"));
       }},
      {"/metrics", "", "All readings in Prometheus' text format, or OpenMetrics by Accept", true,
       [](Site& site, const HttpRequest& request, const Target&) { return site.metrics(request); }},
      {"/api/v1/items", "", "All items as JSON", true,
       [](Site& site, const HttpRequest& request, const Target&) { return site.items(request); }},
      {"/api/v1/items/", "ITEM", "The items that an ID, a name, a path or a pattern names", false,
       [](Site& site, const HttpRequest&, const Target& target) {
         constexpr std::string_view kItem = "/api/v1/items/";
         return site.item(std::string_view(target.path).substr(kItem.size()));
       }},
      {"/api/v1/history", "?item=ITEM&since=T", "Numbers of the last half hour", true,
       [](Site& site, const HttpRequest& request, const Target& target) {
         return site.history(request, target);
       }},
      {"/api/v1/events", "", "Server-sent events, one a sweep", true,
       [](Site&, const HttpRequest&, const Target&) {
         HttpResponse response = text_response("text/event-stream", "");
         response.event_stream = true;
         return response;
       }},
      {"/healthz", "", "200 while the readings are fresh, otherwise 503 and why", true,
       [](Site& site, const HttpRequest&, const Target&) { return site.health(); }},
  };
  return kRoutes;
}

// Targets as clients send them: one that encodes a letter for no reason is not among these, and
// none that chooses items.
bool Site::is_at_hand(std::string_view target) {
  const auto all = routes();
  return std::any_of(all.begin(), all.end(), [target](const Route& route) {
    return route.at_hand && route.path == target;
  });
}

HttpResponse Site::route(const HttpRequest& request, const Target& target) {
  const std::string_view path = target.path;
  for (const Route& route : routes()) {
    const bool followed = route.path.size() > 1 && route.path.ends_with('/');
    if (followed ? path.starts_with(route.path) : path == route.path) {
      return route.answer(*this, request, target);
    }
  }
  const auto* found = kova_page::find_page_file(path.substr(1));
  return found != nullptr ? file(request, *found) : error_response(404, "there is nothing here");
}

HttpResponse Site::metrics(const HttpRequest& request) {
  using kova_host::MetricsFormat;
  const bool open = prefers_openmetrics(request.accept);
  const auto format = open ? MetricsFormat::openmetrics : MetricsFormat::prometheus;
  const auto [snapshot, state] = current();
  Cached& cached = open ? openmetrics_ : plain_metrics_;
  if (cached.snapshot != snapshot) {
    cached = {snapshot, SharedText(items_metrics(*snapshot, format))};
  }
  HttpResponse response =
      shared_response(request,
                      open ? "application/openmetrics-text; version=1.0.0; charset=utf-8"
                           : "text/plain; version=0.0.4; charset=utf-8",
                      kova_host::sweep_text(sweep_of(state), format), cached.text,
                      kova_host::end_of_metrics(format));
  response.extra.emplace_back("Vary", "Accept");
  return response;
}

HttpResponse Site::health() const {
  const kova_page::SweepState state = current().state;
  HttpResponse response = text_response(
      "text/plain; charset=utf-8", (state.up ? "ok" : kova_host::printable(state.error)) + "\n");
  response.status = state.up ? 200 : 503;
  return response;
}

HttpResponse Site::items(const HttpRequest& request) {
  const auto [snapshot, state] = current();
  if (items_.snapshot != snapshot) {
    items_ = {snapshot, SharedText(kova_page::items_text(*snapshot, snapshot->list->items).json)};
  }
  const bool all_read = !kova_host::any_failed(snapshot->readings);
  return shared_response(request, "application/json",
                         kova_page::items_head(options_.machine, all_read, state), items_.text,
                         "}");
}

HttpResponse Site::item(std::string_view name) const {
  const auto [snapshot, state] = current();
  const auto found = items_named(*snapshot, name);
  if (const auto* refusal = std::get_if<HttpResponse>(&found)) {
    return *refusal;
  }
  const auto& items = std::get<std::vector<kova_host::Item>>(found);
  return json_response(
      kova_page::items_document(options_.machine, kova_page::items_text(*snapshot, items), state));
}

HttpResponse Site::history(const HttpRequest& request, const Target& target) {
  const auto [snapshot, state] = current();
  const auto parsed = wanted_history(*snapshot, target);
  if (const auto* refusal = std::get_if<HttpResponse>(&parsed)) {
    return *refusal;
  }
  const auto& wanted = std::get<WantedHistory>(parsed);
  const auto text = [&] {
    return kova_page::history_text(
        wanted.all ? store_.history(store_.history_ids(), wanted.since, kSamplesOfAllItems)
                   : store_.history(wanted.ids, wanted.since, std::numeric_limits<size_t>::max()));
  };
  if (!wanted.all || wanted.since != kEver) {
    return json_response(kova_page::history_head(state) + text());
  }
  // What each page begins with.
  if (history_.snapshot != snapshot) {
    history_ = {snapshot, SharedText(text())};
  }
  return shared_response(request, "application/json", kova_page::history_head(state), history_.text,
                         "");
}

// The two forms of a file differ in their tags.
HttpResponse Site::file(const HttpRequest& request, const kova_page::PageFile& file) {
  HttpResponse response;
  response.content_type = file.type;
  response.extra = {{"Cache-Control", "no-cache"}, {"Vary", "Accept-Encoding"}};
  response.built_in = file.content;
  const bool gzip = wants_gzip(request, file.content.size());
  if (gzip) {
    auto& compressed = compressed_files_[&file];
    if (compressed == nullptr) {
      compressed = std::make_shared<const std::string>(gzip_file("", deflated(file.content), ""));
    }
    response.body = compressed;
  }
  const std::string tag = entity_tag(response.text());
  response.extra.emplace_back("ETag", tag);
  if (request.if_none_match == tag) {
    response.status = 304;
    response.body = nullptr;
    response.built_in = {};
  } else if (gzip) {
    response.extra.emplace_back("Content-Encoding", "gzip");
  }
  return response;
}

std::string Site::newest_event() const {
  const auto [snapshot, state] = current();
  return snapshot->number == 0 ? kova_page::status_event(state)
                               : kova_page::sweep_event(*snapshot, state);
}

std::string Site::status_event() const {
  return kova_page::status_event(current().state);
}

}  // namespace kova_exporter
