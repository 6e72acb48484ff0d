// What a text of metrics that was made before tells of items.
#include "tools/host/earlier_metrics.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <variant>

#include "tools/host/metrics.h"
#include "tools/host/text_value.h"

namespace kova_host {
namespace {

// A line such as: name{family="PoE",...,id="0x14140B01"} 1
struct Sample {
  std::string_view name;
  std::string_view labels;
  uint32_t id;
  double value;
};

std::optional<Sample> sample_in(std::string_view line) {
  constexpr std::string_view kId = "id=\"";
  constexpr size_t kIdLength = 10;
  const size_t open = line.find('{');
  const size_t close = line.rfind("} ");
  // The ID is the last label, so no item's name can stand in for it.
  const size_t id_at = line.rfind(kId);
  if (open == std::string_view::npos || close == std::string_view::npos ||
      id_at == std::string_view::npos || id_at < open || id_at > close) {
    return std::nullopt;
  }
  const auto id = parse_item_id(line.substr(id_at + kId.size(), kIdLength));
  const auto number = parse_number(line.substr(close + 2));
  if (!id || !number) {
    return std::nullopt;
  }
  return Sample{.name = line.substr(0, open),
                .labels = line.substr(open + 1, close - open - 1),
                .id = *id,
                .value = std::visit([](auto v) { return static_cast<double>(v); }, *number)};
}

}  // namespace

EarlierMetrics earlier_metrics(std::string_view text) {
  const std::string& read_success = item_status_metrics()[kReadSuccess].name;
  const std::string& last_success = item_status_metrics()[kLastSuccess].name;
  EarlierMetrics earlier;
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    const auto sample = sample_in(line);
    if (sample && sample->name == read_success) {
      earlier.labels[sample->id] = sample->labels;
    } else if (sample && sample->name == last_success) {
      earlier.last_success[sample->id] = sample->value;
    }
  }
  return earlier;
}

std::string label_value(std::string_view labels, std::string_view name) {
  const std::string start = fmt::format("{}=\"", name);
  // At the front or behind a comma: a value may hold the same text, with its quotes escaped.
  size_t at = labels.starts_with(start) ? 0 : labels.find("," + start);
  if (at == std::string_view::npos) {
    return "";
  }
  std::string value;
  for (at = labels.find('"', at) + 1; at < labels.size() && labels[at] != '"'; ++at) {
    if (labels[at] == '\\' && at + 1 < labels.size()) {
      ++at;
      value += labels[at] == 'n' ? '\n' : labels[at];
    } else {
      value += labels[at];
    }
  }
  return value;
}

}  // namespace kova_host
