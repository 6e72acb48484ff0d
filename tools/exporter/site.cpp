// What each path answers.
#include "tools/exporter/site.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <limits>
#include <variant>

#include "tools/exporter/page/page_files.h"
#include "tools/host/errors.h"
#include "tools/host/metrics.h"
#include "tools/host/selection.h"
#include "tools/host/text_value.h"
#include "tools/host/unix_time.h"

namespace kova_exporter {
namespace {

constexpr size_t kHistoryItems = 64;
// The small lines of the page: enough to see, few enough for every item at once.
constexpr size_t kSamplesOfAllItems = 60;

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

HttpResponse file_response(const kova_page::PageFile& file, const std::string& known_tag) {
  HttpResponse response;
  const std::string tag = entity_tag(file.content);
  if (known_tag == tag) {
    response.status = 304;
  } else {
    response.built_in = file.content;
  }
  response.content_type = file.type;
  response.extra = {{"Cache-Control", "no-cache"}, {"ETag", tag}};
  return response;
}

// Unix time; negative numbers count back from now. Nothing for a text that is no number.
std::optional<double> since_time(std::string_view text) {
  const auto number = kova_host::parse_number(text);
  if (!number) {
    return std::nullopt;
  }
  const double seconds = std::visit([](auto v) { return static_cast<double>(v); }, *number);
  return seconds < 0 ? kova_host::unix_time() + seconds : seconds;
}

// The items that a client asks for by ID, name, path or pattern, or the answer that there are none.
std::variant<std::vector<kova_host::Item>, HttpResponse> items_named(const Snapshot& snapshot,
                                                                     std::string_view text) {
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

std::string items_metrics(const Snapshot& snapshot, kova_host::MetricsFormat format) {
  const kova_host::EarlierMetrics earlier{.last_success = snapshot.last_success, .labels = {}};
  return kova_host::items_text(kova_host::distinct(snapshot.list->items), snapshot.readings,
                               snapshot.time, earlier, format);
}

kova_host::Sweep sweep_of(const SweepState& state) {
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
  const SweepState state =
      sweep_state(*snapshot, store_.interval(), std::chrono::steady_clock::now());
  return {std::move(snapshot), state};
}

HttpResponse Site::answer(const HttpRequest& request) {
  if (auto refusal = objection(request, options_.local_hosts_only)) {
    return std::move(*refusal);
  }
  const auto target = parse_target(request.target);
  return target ? route(request, *target) : error_response(400, "the path or query is malformed");
}

HttpResponse Site::route(const HttpRequest& request, const Target& target) {
  constexpr std::string_view kItem = "/api/v1/items/";
  const std::string_view path = target.path;
  if (path == "/metrics") {
    return metrics(request);
  }
  if (path == "/healthz") {
    return health();
  }
  if (path == "/api/v1/items") {
    return items();
  }
  if (path.starts_with(kItem)) {
    return item(path.substr(kItem.size()));
  }
  if (path == "/api/v1/history") {
    return history(target);
  }
  if (path == "/api/v1/events") {
    HttpResponse response = text_response("text/event-stream", "");
    response.event_stream = true;
    return response;
  }
  const auto* file = kova_page::find_page_file(path == "/" ? "page.html" : path.substr(1));
  return file != nullptr ? file_response(*file, request.if_none_match)
                         : error_response(404, "there is nothing here");
}

HttpResponse Site::metrics(const HttpRequest& request) {
  using kova_host::MetricsFormat;
  const bool open = prefers_openmetrics(request.accept);
  const auto format = open ? MetricsFormat::openmetrics : MetricsFormat::prometheus;
  const auto [snapshot, state] = current();
  Cached<std::string>& cached = open ? openmetrics_ : plain_metrics_;
  if (cached.snapshot != snapshot) {
    cached = {snapshot, items_metrics(*snapshot, format)};
  }
  HttpResponse response;
  response.content_type = open ? "application/openmetrics-text; version=1.0.0; charset=utf-8"
                               : "text/plain; version=0.0.4; charset=utf-8";
  response.body = std::make_shared<const std::string>(
      fmt::format("{}{}{}", kova_host::sweep_text(sweep_of(state), format), cached.text,
                  kova_host::end_of_metrics(format)));
  response.extra = {{"Vary", "Accept"}, {"Cache-Control", "no-store"}};
  return response;
}

HttpResponse Site::health() const {
  const SweepState state = current().state;
  HttpResponse response =
      text_response("text/plain; charset=utf-8", (state.up ? "ok" : state.error) + "\n");
  response.status = state.up ? 200 : 503;
  return response;
}

HttpResponse Site::items() {
  const auto [snapshot, state] = current();
  if (items_.snapshot != snapshot) {
    items_ = {snapshot, items_text(*snapshot, snapshot->list->items)};
  }
  return json_response(items_document(options_.machine, items_.text, state));
}

HttpResponse Site::item(std::string_view name) const {
  const auto [snapshot, state] = current();
  const auto found = items_named(*snapshot, name);
  if (const auto* refusal = std::get_if<HttpResponse>(&found)) {
    return *refusal;
  }
  const auto& items = std::get<std::vector<kova_host::Item>>(found);
  return json_response(items_document(options_.machine, items_text(*snapshot, items), state));
}

HttpResponse Site::history(const Target& target) const {
  const auto [snapshot, state] = current();
  std::vector<uint32_t> ids;
  const auto names = target.values("item");
  for (const std::string_view name : names) {
    const auto found = items_named(*snapshot, name);
    if (const auto* refusal = std::get_if<HttpResponse>(&found)) {
      return *refusal;
    }
    for (const kova_host::Item& item : std::get<std::vector<kova_host::Item>>(found)) {
      ids.push_back(item.id);
    }
  }
  if (ids.size() > kHistoryItems) {
    return error_response(400, fmt::format("at most {} items at once", kHistoryItems));
  }
  double since = -std::numeric_limits<double>::infinity();
  if (const auto values = target.values("since"); !values.empty()) {
    const auto time = since_time(values.back());
    if (!time) {
      return error_response(400, fmt::format("'{}' is no time in seconds", values.back()));
    }
    since = *time;
  }
  const bool all = names.empty();
  const size_t at_most = all ? kSamplesOfAllItems : std::numeric_limits<size_t>::max();
  return json_response(
      history_document(store_.history(all ? store_.history_ids() : ids, since, at_most), state));
}

std::string Site::newest_event() const {
  const auto [snapshot, state] = current();
  return snapshot->number == 0 ? kova_exporter::status_event(state) : sweep_event(*snapshot, state);
}

std::string Site::status_event() const {
  return kova_exporter::status_event(current().state);
}

}  // namespace kova_exporter
