// What a report holds: the last readings, their history and every failure.
#include "tools/kovactl/report_document.h"

#include <cmath>
#include <limits>

#include "tools/host/export/json_report.h"
#include "tools/host/model/status_text.h"
#include "tools/host/system/json_writer.h"

namespace kovactl {

using namespace kova_host;

ReportDocument::ReportDocument(std::vector<Item> items)
    : list_(std::make_shared<kova_page::ItemList>()) {
  list_->number = 1;
  list_->items = std::move(items);
  last_.list = list_;
}

void ReportDocument::add(double time, Readings readings) {
  extract_.times.push_back(time);
  for (const auto& [id, reading] : readings) {
    const auto number = reading.number();
    const bool good = reading.state == Reading::State::good && number && std::isfinite(*number);
    if (good || extract_.series.contains(id)) {
      auto& series = extract_.series[id];
      series.resize(extract_.times.size(), std::numeric_limits<double>::quiet_NaN());
      series.back() = good ? *number : std::numeric_limits<double>::quiet_NaN();
    }
    if (reading.state == Reading::State::failed) {
      Failure& failure = failures_[id];
      ++failure.count;
      failure.last_time = time;
      failure.last_status = reading.status;
    }
  }
  ++last_.number;
  last_.time = time;
  last_.readings = std::move(readings);
}

JsonPtr ReportDocument::failures() const {
  JsonPtr object = own(json_object());
  for (const auto& [id, failure] : failures_) {
    JsonPtr entry = own(json_object());
    put(entry, "count", own(json_integer(static_cast<json_int_t>(failure.count))));
    put(entry, "last", own(json_real(failure.last_time)));
    put(entry, "failure", json_text(read_failure(failure.last_status)));
    put_status(entry, failure.last_status);
    put(object, id_text(id).c_str(), std::move(entry));
  }
  return object;
}

std::string ReportDocument::json(const Heading& heading) const {
  kova_page::SweepState state;
  state.number = last_.number;
  state.list = list_->number;
  state.time = last_.time;
  state.age = 0;
  state.interval = heading.interval;
  state.up = true;
  JsonPtr head = own(json_object());
  put(head, "made", own(json_real(heading.made)));
  put(head, "source", json_text(heading.source));
  put(head, "failures", failures());
  std::string text = json_document(head.get(), JsonLayout::one_line);
  text.resize(text.rfind('}'));
  return text + R"(,"items":)" +
         kova_page::items_document(heading.machine, kova_page::items_text(last_, list_->items),
                                   state) +
         R"(,"history":)" + kova_page::history_document(extract_, state) + "}";
}

}  // namespace kovactl
