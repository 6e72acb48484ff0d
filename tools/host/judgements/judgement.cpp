// Sweeps as rules see them, and the words for what is found.
#include "tools/host/judgements/judgement.h"

#include <fmt/format.h>
#include <fnmatch.h>

#include <algorithm>

#include "tools/host/values/units.h"

namespace kova_host {

std::string_view severity_name(Severity severity) {
  switch (severity) {
    case Severity::unknown:
      return "unknown";
    case Severity::warning:
      return "warning";
    case Severity::critical:
      return "critical";
  }
  return "";
}

const Reading* SweepView::reading(uint32_t id) const {
  const auto found = readings_.find(id);
  return found == readings_.end() ? nullptr : &found->second;
}

const Reading* SweepView::good_reading(const Item* item) const {
  const Reading* reading = item == nullptr ? nullptr : this->reading(item->id);
  return reading != nullptr && reading->state == Reading::State::good ? reading : nullptr;
}

const Item* SweepView::find(std::string_view path) const {
  const auto found = std::find_if(items_.begin(), items_.end(),
                                  [path](const Item& item) { return fits_path(path, item); });
  return found == items_.end() ? nullptr : &*found;
}

std::optional<double> SweepView::number(std::string_view path) const {
  const Reading* reading = good_reading(find(path));
  return reading == nullptr ? std::nullopt : reading->number();
}

std::string_view SweepView::label(std::string_view path) const {
  const Item* item = find(path);
  const Reading* reading = good_reading(item);
  if (reading == nullptr) {
    return "";
  }
  if (const auto* text = std::get_if<std::string>(&reading->value)) {
    return *text;
  }
  const auto* integer = std::get_if<int64_t>(&reading->value);
  return integer == nullptr ? "" : option_label(*item, *integer);
}

bool fits_path(std::string_view pattern, const Item& item) {
  // Most items differ in their names already.
  const std::string_view name = pattern.substr(pattern.rfind('/') + 1);
  if (name.find_first_of("*?[") == std::string_view::npos && name != item.name) {
    return false;
  }
  return fnmatch(std::string(pattern).c_str(), path_of(item).c_str(), 0) == 0;
}

bool looks_at(const LooksAt& what, const Item& item) {
  if (what.measured && item.facts.role != Role::reading && item.facts.role != Role::state &&
      item.facts.role != Role::unknown) {
    return false;
  }
  if (!what.quantity.empty()) {
    const Unit* unit = find_unit(item.unit);
    if (unit == nullptr || unit->quantity->name != what.quantity) {
      return false;
    }
  }
  return what.path.empty() || fits_path(what.path, item);
}

std::string Finding::message() const {
  return says + (evidence.empty() ? "" : ": " + evidence);
}

std::string Finding::sentence() const {
  return path + ' ' + message();
}

}  // namespace kova_host
