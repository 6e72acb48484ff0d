// Catalogue maps and the lookups and raw reads over them.
#include "framework/catalogue.h"

#include <utility>

namespace catalogue {
namespace {

StringMap text_column(std::span<const Row> rows, std::string_view Row::*column) {
  StringMap map;
  for (const Row& row : rows) {
    if (!(row.*column).empty()) {
      map.emplace(row.id, row.*column);
    }
  }
  return map;
}

// Reads the items first..end-1 in turn and hands over the raw word of each that can be read.
template <typename Visit>
void visit_readable(const ReadEntry& get_func, RawMap& codes, unsigned int first, unsigned int end,
                    const Visit& visit) {
  unsigned int raw = 0;
  for (unsigned int id = first; id < end; ++id) {
    if (get_func(codes[id], &raw) == 0) {
      visit(id, raw);
    }
  }
}

}  // namespace

StringMap name_map(std::span<const Row> rows) {
  return text_column(rows, &Row::name);
}
StringMap unit_map(std::span<const Row> rows) {
  return text_column(rows, &Row::unit);
}
StringMap option_map(std::span<const Row> rows) {
  return text_column(rows, &Row::options);
}

RawMap code_map(std::span<const Row> rows) {
  RawMap map;
  for (const Row& row : rows) {
    if (row.code) {
      map.emplace(row.id, *row.code);
    }
  }
  return map;
}

RangeMap bound_map(std::span<const Row> rows) {
  RangeMap map;
  for (const Row& row : rows) {
    if (row.range) {
      map.emplace(row.id, Range{{MIN, row.range->min}, {MAX, row.range->max}});
    }
  }
  return map;
}

Status get_string_from_map(const StringMap& map, unsigned int id, std::string* out) {
  const auto found = map.find(id);
  if (found == map.end()) {
    return IOT_STATUS_NOT_FOUND;
  }
  *out = found->second;
  return IOT_STATUS_SUCCESS;
}

std::string text_by_id(const StringMap& map, unsigned int id) {
  std::string text;
  get_string_from_map(map, id, &text);
  return text;
}

Range range_by_id(const RangeMap& map, unsigned int id) {
  const auto found = map.find(id);
  return found == map.end() ? Range{} : found->second;
}

void update_range(RangeMap& map, unsigned int id, double min, double max) {
  Range& range = map[id];
  range[MIN] = min;
  range[MAX] = max;
}

bool is_available(ReadEntry get_func, RawMap& codes, unsigned int presence_id) {
  if (get_func == nullptr) {
    return false;
  }
  // Asked before every read, so not searched for: it has the lowest ID of its family.
  const auto lowest = codes.begin();
  const unsigned int code =
      lowest != codes.end() && lowest->first == presence_id ? lowest->second : codes[presence_id];
  unsigned int present = 0;
  return get_func(code, &present) == 0 && present != 0;
}

Status read_raw(ReadEntry get_func, RawMap& codes, unsigned int id, unsigned int* value) {
  if (get_func == nullptr) {
    return IOT_STATUS_NOT_READY;
  }
  unsigned int raw = 0;
  if (get_func(codes[id], &raw) != 0) {
    return IOT_STATUS_READ_FAILED;
  }
  *value = raw;
  return IOT_STATUS_SUCCESS;
}

void read_raw_range(const ReadEntry& get_func, RawMap& codes, unsigned int presence_id,
                    unsigned int first, unsigned int end, RawMap* out) {
  if (!is_available(get_func, codes, presence_id)) {
    return;
  }
  out->clear();
  visit_readable(get_func, codes, first, end,
                 [out](unsigned int id, unsigned int raw) { (*out)[id] = raw; });
}

Status read_texts(const ReadEntry& get_func, RawMap& codes, unsigned int presence_id,
                  unsigned int first, unsigned int end, TextFormat format, StringMap* out) {
  if (get_func == nullptr) {
    return IOT_STATUS_NOT_READY;
  }
  if (!is_available(get_func, codes, presence_id)) {
    return IOT_STATUS_READ_FAILED;
  }
  StringMap texts;
  bool any_read = false;
  visit_readable(get_func, codes, first, end, [&](unsigned int id, unsigned int raw) {
    any_read = true;
    if (std::string text = format(id, raw); !text.empty()) {
      texts.emplace(id, std::move(text));
    }
  });
  if (!any_read) {
    return IOT_STATUS_READ_FAILED;
  }
  *out = std::move(texts);
  return out->empty() ? IOT_STATUS_READ_FAILED : IOT_STATUS_SUCCESS;
}

}  // namespace catalogue
