// A sample of `kovactl watch` for pipes and logs.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "tools/host/values/reading.h"

namespace kovactl {

struct Sample {
  kova_host::Readings readings;
  std::chrono::system_clock::time_point taken;
};

// One line: the UTC time with milliseconds, then "0x14140201=48.2" for each item, separated by
// tabs.
std::string sample_line(const std::vector<kova_host::Item>& items, const Sample& sample);

// One line of JSON: as `list --json`, without what never changes, and with "time", the seconds
// since the Unix epoch.
std::string sample_json(const std::vector<kova_host::Item>& items, const Sample& sample);

}  // namespace kovactl
