// The choices of an item whose values have names.
#include "tools/host/model/options.h"

#include <algorithm>

#include "tools/host/system/typed_number.h"

namespace kova_host {

std::vector<Option> parse_options(std::string_view description) {
  std::vector<Option> options;
  while (!description.empty()) {
    const size_t bar = std::min(description.find('|'), description.size());
    const std::string_view part = trimmed(description.substr(0, bar));
    description.remove_prefix(std::min(bar + 1, description.size()));
    const size_t equals = part.find('=');
    if (equals == std::string_view::npos) {
      continue;
    }
    if (const auto value = parse_decimal(trimmed(part.substr(0, equals)))) {
      options.push_back({*value, std::string(trimmed(part.substr(equals + 1)))});
    }
  }
  return options;
}

}  // namespace kova_host
