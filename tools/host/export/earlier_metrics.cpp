// What a text of metrics that was made before tells of items.
#include "tools/host/export/earlier_metrics.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <variant>

#include "tools/host/export/metrics.h"
#include "tools/host/system/typed_number.h"

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
  const bool in_order = open < id_at && id_at < close;
  if (!in_order || close == std::string_view::npos) {
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
                .value = as_double(*number)};
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
  // Behind a comma: a value may hold the same text, with its quotes escaped.
  const std::string start = fmt::format(",{}=\"", name);
  const std::string all = fmt::format(",{}", labels);
  const size_t found = all.find(start);
  if (found == std::string::npos) {
    return "";
  }
  std::string value;
  for (size_t at = found + start.size(); at < all.size() && all[at] != '"'; ++at) {
    if (all[at] == '\\' && at + 1 < all.size()) {
      ++at;
      value += all[at] == 'n' ? '\n' : all[at];
    } else {
      value += all[at];
    }
  }
  return value;
}

}  // namespace kova_host
