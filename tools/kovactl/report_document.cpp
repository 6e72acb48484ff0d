// What a report holds: the last readings, their history, every failure and all else that needed
// attention.
#include "tools/kovactl/report_document.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

#include "tools/host/export/json_report.h"
#include "tools/host/system/json_writer.h"
#include "tools/host/values/shown_value.h"

namespace kovactl {

using namespace kova_host;

ReportDocument::ReportDocument(std::vector<Item> items, double step)
    : list_(std::make_shared<kova_page::ItemList>(kova_page::ItemList{1, std::move(items)})),
      samples_(step),
      judge_(list_->items) {}

// Notes how it is from this sweep on.
void ReportDocument::note(Spells& spells, uint32_t id, bool is_so, const std::string& message,
                          uint32_t status) {
  if (is_so) {
    Spell& spell = spells[id];
    spell.lasts = true;
    spell.last_status = status;
    spell.last_message = message;
  } else if (const auto spell = spells.find(id); spell != spells.end()) {
    spell->second.lasts = false;
  }
}

void ReportDocument::count(Spells& spells, double time) {
  for (auto& [id, spell] : spells) {
    if (spell.lasts) {
      ++spell.count;
      spell.last_time = time;
    }
  }
}

void ReportDocument::judge(const std::vector<uint32_t>& fresh) {
  for (const uint32_t id : judge_.take(readings_, fresh)) {
    std::string message;
    for (const Finding& finding : judge_.on(id)) {
      if (finding.kind != kUnreadableKind) {  // told as a failure
        message += (message.empty() ? "" : "; ") + finding.message();
      }
    }
    note(judged_, id, !message.empty(), message, 0);
  }
}

void ReportDocument::add(double time, const Readings& readings,
                         const std::vector<uint32_t>& fresh) {
  std::vector<std::pair<uint32_t, double>> numbers;
  for (const uint32_t id : fresh) {
    const Reading& reading = readings.at(id);
    readings_[id] = reading;
    const auto number = reading.number();
    const bool good = reading.state == Reading::State::good && number && std::isfinite(*number);
    numbers.emplace_back(id, good ? *number : std::numeric_limits<double>::quiet_NaN());
    const bool failed = reading.state == Reading::State::failed;
    note(failures_, id, failed, failed ? failure_reason(reading) : "", reading.status);
  }
  judge(fresh);
  samples_.add(time, numbers);
  count(failures_, time);
  count(judged_, time);
  ++sweeps_;
  last_time_ = time;
}

void ReportDocument::add(double time, const Readings& readings) {
  std::vector<uint32_t> all;
  std::transform(readings.begin(), readings.end(), std::back_inserter(all),
                 [](const auto& entry) { return entry.first; });
  add(time, readings, all);
}

JsonPtr ReportDocument::entry_of(const Spell& spell) {
  JsonPtr entry = own(json_object());
  put(entry, "count", own(json_integer(static_cast<json_int_t>(spell.count))));
  put(entry, "last", own(json_real(spell.last_time)));
  return entry;
}

JsonPtr ReportDocument::failures() const {
  JsonPtr object = own(json_object());
  for (const auto& [id, spell] : failures_) {
    JsonPtr entry = entry_of(spell);
    put(entry, "failure", json_text(spell.last_message));
    put_status(entry, spell.last_status);
    put(object, id_text(id).c_str(), std::move(entry));
  }
  return object;
}

JsonPtr ReportDocument::judgements() const {
  JsonPtr object = own(json_object());
  for (const auto& [id, spell] : judged_) {
    JsonPtr entry = entry_of(spell);
    put(entry, "message", json_text(spell.last_message));
    put(object, id_text(id).c_str(), std::move(entry));
  }
  return object;
}

std::string ReportDocument::json(const Heading& heading) const {
  kova_page::SweepState state;
  kova_page::Snapshot last;
  last.list = list_;
  last.readings = readings_;
  state.number = sweeps_;
  state.list = list_->number;
  state.time = last_time_;
  state.age = 0;
  state.interval = heading.interval;
  state.up = true;
  JsonPtr head = own(json_object());
  put(head, "made", own(json_real(heading.made)));
  put(head, "source", json_text(heading.source));
  put(head, "failures", failures());
  put(head, "judged", judgements());
  std::string text = json_document(head.get(), JsonLayout::one_line);
  text.resize(text.rfind('}'));
  return text + R"(,"items":)" +
         kova_page::items_document(heading.machine, kova_page::items_text(last, list_->items),
                                   state) +
         R"(,"history":)" + kova_page::history_document(samples_.extract(), state) + "}";
}

}  // namespace kovactl
