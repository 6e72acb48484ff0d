// What clients may ask of the exporter. The first line is the method, the second the Host header,
// the third the Accept header, the fourth the target; they reach the code that answers requests
// just as the server hands them over.
#include "tests/exporter/sample.h"
#include "tests/fuzz/fuzz_device.h"
#include "tools/exporter/site.h"

namespace {

using namespace kova_exporter;

std::string take_line(std::string_view& text) {
  const std::string_view line = text.substr(0, text.find('\n'));
  text.remove_prefix(std::min(line.size() + 1, text.size()));
  return std::string(line);
}

const Store& store() {
  static Store* const store = [] {
    auto* made = new Store(5);
    const kova_page::RecentSamples::Row row = {{kFan, 3000}};
    made->publish(sample_sweep(1, 0), &row);
    return made;
  }();
  return *store;
}

bool is_known_status(int status) {
  constexpr int kKnown[] = {200, 304, 400, 403, 404, 405, 414, 431};
  return std::find(std::begin(kKnown), std::end(kKnown), status) != std::end(kKnown);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static Site site(store(),
                   {.machine = {.name = "bus", .simulated = ""}, .local_hosts_only = true});
  std::string_view text(reinterpret_cast<const char*>(data), size);
  HttpRequest request;
  request.method = take_line(text);
  request.hosts = {take_line(text)};
  request.accept = take_line(text);
  (void)accepts_gzip(request.accept);
  request.target = text;
  const HttpResponse response = site.answer(request);
  FUZZ_EXPECT(is_known_status(response.status));
  FUZZ_EXPECT(response.status != 200 || request.method == "GET" || request.method == "HEAD");
  FUZZ_EXPECT(response.status != 200 || is_local_host(request.hosts.front()));
  if (response.content_type == "application/json" && response.status != 304) {
    const kova_host::JsonPtr json(json_loadb(response.text().data(), response.text().size(),
                                             JSON_REJECT_DUPLICATES, nullptr));
    FUZZ_EXPECT(json != nullptr);
    FUZZ_EXPECT(response.status == 200 || json_is_false(json_object_get(json.get(), "ok")));
  }
  return 0;
}
