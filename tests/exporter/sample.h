// A small machine for the exporter's tests: three items, one of which cannot be read.
#pragma once

#include "tools/exporter/store.h"

namespace kova_exporter {

constexpr uint32_t kFan = 0x14170311;
constexpr uint32_t kBroken = 0x14170312;
constexpr uint32_t kText = 0x14170601;

// Sweep `number`, which ended so long ago.
inline std::shared_ptr<kova_page::Snapshot> sample_sweep(uint64_t number, double age) {
  using kova_host::Item;
  using kova_host::Reading;
  auto list = std::make_shared<kova_page::ItemList>();
  list->number = 1;
  for (const auto& [id, name] : {std::pair(kFan, "fan 1"), {kBroken, "fan 2"}, {kText, "maker"}}) {
    Item item;
    item.id = id;
    item.family = "F";
    item.package = "P";
    item.name = name;
    item.kind = id == kText ? kova_host::ValueKind::text : kova_host::ValueKind::integer;
    item.unit = id == kText ? "" : "RPM";
    list->items.push_back(item);
  }
  auto snapshot = std::make_shared<kova_page::Snapshot>();
  snapshot->list = std::move(list);
  snapshot->number = number;
  snapshot->time = 1700000000.5 + static_cast<double>(number);
  snapshot->ended = std::chrono::steady_clock::now() -
                    std::chrono::duration_cast<std::chrono::steady_clock::duration>(
                        std::chrono::duration<double>(age));
  snapshot->duration = 0.25;
  snapshot->readings[kFan] = {Reading::State::good, 0, int64_t{3000}};
  snapshot->readings[kBroken] = {Reading::State::failed, 5, {}};
  snapshot->readings[kText] = {Reading::State::good, 0, std::string("a \"b\"")};
  return snapshot;
}

}  // namespace kova_exporter
