// JSON text as hosts read it.
#include "tools/host/system/json_writer.h"

#include "tools/host/system/plain_text.h"

namespace kova_host {

std::string json_document(const json_t* value, JsonLayout layout) {
  // 36.85 is stored as 36.850000000000001, which nobody wants to read and no device has measured.
  constexpr size_t kSignificantDigits = 15;
  const size_t spacing = layout == JsonLayout::indented ? JSON_INDENT(2) : JSON_COMPACT;
  const std::unique_ptr<char, decltype(&std::free)> text(
      json_dumps(value, JSON_REAL_PRECISION(kSignificantDigits) | spacing), &std::free);
  if (text == nullptr) {
    throw std::bad_alloc();
  }
  return printable_json(text.get()) + "\n";
}

}  // namespace kova_host
