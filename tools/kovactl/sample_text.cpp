// A sample of `kovactl watch` for pipes and logs.
#include "tools/kovactl/sample_text.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include "tools/host/export/json_report.h"
#include "tools/host/system/json_writer.h"
#include "tools/host/values/shown_value.h"

namespace kovactl {

using namespace kova_host;
namespace {

int64_t unix_milliseconds(std::chrono::system_clock::time_point time) {
  using std::chrono::duration_cast, std::chrono::milliseconds;
  return duration_cast<milliseconds>(time.time_since_epoch()).count();
}

}  // namespace

std::string sample_line(const std::vector<Item>& items, const Sample& sample) {
  const int64_t time = unix_milliseconds(sample.taken);
  std::string line = fmt::format("{:%Y-%m-%dT%H:%M:%S}.{:03}Z",
                                 fmt::gmtime(static_cast<std::time_t>(time / 1000)), time % 1000);
  for (const Item& item : items) {
    line += fmt::format("\t{}={}", id_text(item.id), plain_value(sample.readings.at(item.id)));
  }
  return line + '\n';
}

std::string sample_json(const std::vector<Item>& items, const Sample& sample) {
  JsonPtr object = json_items(items, sample.readings, Detail::brief);
  put(object, "time", own(json_real(static_cast<double>(unix_milliseconds(sample.taken)) / 1000)));
  return json_document(object.get(), JsonLayout::one_line);
}

}  // namespace kovactl
