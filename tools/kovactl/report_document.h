// What a report holds: the last readings, their history, every failure and all else that needed
// attention.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "tools/host/judgements/judge.h"
#include "tools/page/api_document.h"
#include "tools/page/thinned_samples.h"

namespace kovactl {

class ReportDocument {
 public:
  // `items` in the document's order; an ID may stand there twice. Lines are drawn in steps of so
  // many seconds where more than three sweeps come in one.
  ReportDocument(std::vector<kova_host::Item> items, double step);

  // A sweep that ended at `time`, Unix time in seconds, with the readings of all items and the IDs
  // of those that were read in it.
  void add(double time, const kova_host::Readings& readings, const std::vector<uint32_t>& fresh);
  void add(double time, const kova_host::Readings& readings);

  size_t sweeps() const { return sweeps_; }
  bool is_thinned() const { return samples_.is_thinned(); }
  // IDs that failed in at least one sweep.
  size_t failed_items() const { return failures_.size(); }

  struct Heading {
    kova_page::Machine machine;
    std::string source;  // where the readings come from, for people
    double made;         // Unix time
    double interval;     // seconds between samples that are drawn, at most
  };

  // As the page reads it; after at least one sweep.
  std::string json(const Heading& heading) const;

 private:
  // In how many sweeps something was so, and how it was at the last.
  struct Spell {
    size_t count = 0;
    double last_time = 0;
    uint32_t last_status = 0;
    std::string last_message;
    bool lasts = false;
  };
  using Spells = std::map<uint32_t, Spell>;

  static void note(Spells& spells, uint32_t id, bool is_so, const std::string& message,
                   uint32_t status);
  static void count(Spells& spells, double time);
  static kova_host::JsonPtr entry_of(const Spell& spell);
  kova_host::JsonPtr failures() const;
  kova_host::JsonPtr judgements() const;
  void judge(const std::vector<uint32_t>& fresh);

  std::shared_ptr<kova_page::ItemList> list_;
  kova_page::ThinnedSamples samples_;
  kova_host::Readings readings_;
  size_t sweeps_ = 0;
  double last_time_ = 0;
  Spells failures_;
  kova_host::RunningJudge judge_;
  Spells judged_;  // by another rule than that it failed
};

}  // namespace kovactl
