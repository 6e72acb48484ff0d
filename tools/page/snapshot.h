// One sweep over all items, as the serving side sees it: whole, and never changed again.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tools/host/judgements/judge.h"
#include "tools/host/values/reading.h"

namespace kova_page {

// What a started module offers. A restart makes a new list with a new number.
struct ItemList {
  uint32_t number = 0;                    // 0 only for the empty list before the first start
  std::vector<kova_host::Item> items;     // the document's order; an ID may stand there twice
  kova_host::Thresholds thresholds = {};  // what the user wants judged otherwise
};

struct Snapshot {
  std::shared_ptr<const ItemList> list;     // never null
  kova_host::Readings readings;             // one for each ID of the list
  std::map<uint32_t, double> last_success;  // Unix time of the last good read, by item ID
  uint64_t number = 0;                      // sweeps that have ended, this one included
  double time = 0;                          // Unix time of its end, to the millisecond
  std::chrono::steady_clock::time_point ended;
  double duration = 0;  // seconds
  std::string error;    // why there are no fresh readings; "" if the device answered
  std::string trouble;  // what was wrong with the device library last, until all items answer
};

// How the newest snapshot stands at the time of an answer.
struct SweepState {
  uint64_t number = 0;
  uint32_t list = 0;
  std::optional<double> time;  // these three are empty before the first sweep
  std::optional<double> age;
  std::optional<double> duration;
  double interval = 0;
  bool up = false;
  std::string error;         // only while not up
  std::string trouble = {};  // as the snapshot has it

  // Seconds from one sweep to the next: the interval, or more on a bus so slow that half the time
  // is spent on sweeps.
  double pace() const;
};

// A sweep is stale after three times the pace at which sweeps come.
SweepState sweep_state(const Snapshot& snapshot, double interval,
                       std::chrono::steady_clock::time_point now);

}  // namespace kova_page
