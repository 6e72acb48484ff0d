// Catalogue maps and the lookups and raw reads over them.
#include "framework/catalogue.h"

#include <bit>
#include <utility>
#include <vector>

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

// The same for the items' texts. A family's texts are read together, one for any of them, after its
// presence; an empty one counts as none.
template <typename Visit>
Status visit_texts(const ReadEntry& get_func, RawMap& codes, const RowTable& table,
                   const Visit& visit) {
  if (get_func == nullptr) {
    return IOT_STATUS_NOT_READY;
  }
  if (!is_available(get_func, codes, table.rows().front().id)) {
    return IOT_STATUS_READ_FAILED;
  }
  Status status = IOT_STATUS_READ_FAILED;
  visit_readable(get_func, codes, table.texts().first, table.texts().end,
                 [&](unsigned int id, unsigned int raw) {
                   if (std::string text = table.find(id)->text(raw); !text.empty()) {
                     status = IOT_STATUS_SUCCESS;
                     visit(id, std::move(text));
                   }
                 });
  return status;
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

// Searched at every read, so inserted level by level, which makes a balanced tree: in ascending
// order the last items, the busiest ones, would come to lie deepest.
RawMap code_map(std::span<const Row> rows) {
  std::vector<RawMap::value_type> codes;
  codes.reserve(rows.size());
  for (const Row& row : rows) {
    if (row.code) {
      codes.emplace_back(row.id, *row.code);
    }
  }
  RawMap map;
  for (std::size_t step = std::bit_ceil(codes.size()); step != 0; step /= 2) {
    for (std::size_t at = step - 1; at < codes.size(); at += 2 * step) {
      map.insert(codes[at]);
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

void read_raw_range(const ReadEntry& get_func, RawMap& codes, unsigned int presence_id,
                    unsigned int first, unsigned int end, RawMap* out) {
  if (!is_available(get_func, codes, presence_id)) {
    return;
  }
  out->clear();
  visit_readable(get_func, codes, first, end,
                 [out](unsigned int id, unsigned int raw) { (*out)[id] = raw; });
}

Status read_texts(const ReadEntry& get_func, RawMap& codes, const RowTable& table, StringMap* out) {
  StringMap made;
  const Status status =
      visit_texts(get_func, codes, table,
                  [&](unsigned int id, std::string&& text) { made.emplace(id, std::move(text)); });
  if (status == IOT_STATUS_SUCCESS) {
    *out = std::move(made);
  }
  return status;
}

Status publish_text(const ReadEntry& get_func, RawMap& codes, const RowTable& table,
                    unsigned int id, json_t* value) {
  std::string wanted;
  const Status status =
      visit_texts(get_func, codes, table, [&](unsigned int read, std::string&& text) {
        if (read == id) {
          wanted = std::move(text);
        }
      });
  if (status != IOT_STATUS_SUCCESS) {
    return status;
  }
  if (wanted.empty()) {
    return IOT_STATUS_NOT_FOUND;
  }
  json_string_set(value, wanted.c_str());
  return IOT_STATUS_SUCCESS;
}

}  // namespace catalogue
