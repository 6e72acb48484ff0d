// What a text of metrics that was made before tells of items: a file that kovactl replaces.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace kova_host {

struct EarlierMetrics {
  std::map<uint32_t, double> last_success;  // Unix time of the last good read, by item ID
  std::map<uint32_t, std::string> labels;   // of every item, as they stand in the text
};

// Reads such a text; lines that are of no use are passed over.
EarlierMetrics earlier_metrics(std::string_view text);

// The value of one of these labels as it was before it was escaped; "" if there is none.
std::string label_value(std::string_view labels, std::string_view name);

}  // namespace kova_host
