// What a report holds: the last readings, their history and every failure.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "tools/host/values/reading.h"
#include "tools/page/api_document.h"

namespace kovactl {

class ReportDocument {
 public:
  // `items` in the document's order; an ID may stand there twice.
  explicit ReportDocument(std::vector<kova_host::Item> items);

  // A sweep that ended at `time`, Unix time in seconds.
  void add(double time, kova_host::Readings readings);

  size_t sweeps() const { return extract_.times.size(); }
  // IDs that failed in at least one sweep.
  size_t failed_items() const { return failures_.size(); }

  struct Heading {
    kova_page::Machine machine;
    std::string source;  // where the readings come from, for people
    double made;         // Unix time
    double interval;     // seconds between sweeps
  };

  // As the page reads it; after at least one sweep.
  std::string json(const Heading& heading) const;

 private:
  struct Failure {
    size_t count = 0;
    double last_time = 0;
    uint32_t last_status = 0;
  };

  kova_host::JsonPtr failures() const;

  std::shared_ptr<kova_page::ItemList> list_;
  kova_page::Snapshot last_;
  kova_page::RecentSamples::Extract extract_;
  std::map<uint32_t, Failure> failures_;
};

}  // namespace kovactl
