// The common ending of an element.
#include "framework/element.h"

namespace {

double end_of(const Range& range, ENUM_MIN_MAX end) {
  const auto found = range.find(end);
  return found == range.end() ? 0.0 : found->second;
}

void add_text(json_t* element, const char* key, const std::string& text) {
  if (!text.empty()) {
    IoTJsonUtility::update_json_object(element, key, text);
  }
}

}  // namespace

Status end_element(json_t** element, const ElementEnding& ending) {
  if (json_object_size(*element) == 0) {
    IoTJsonUtility::free_json_obj(element);
    return IOT_STATUS_JSON_ERROR;
  }
  add_text(*element, "uiop", ending.options);
  if (!ending.range.empty()) {
    IoTJsonUtility::update_json_object(*element, "min", end_of(ending.range, MIN));
    IoTJsonUtility::update_json_object(*element, "max", end_of(ending.range, MAX));
  }
  add_text(*element, "desc", ending.description);
  add_text(*element, "u", ending.unit);
  return IOT_STATUS_SUCCESS;
}
