// What the families' elements have in common: the keys that follow an element's first five, and
// what becomes of an element that could not be built.
#pragma once

#include <jansson.h>

#include "framework/catalogue.h"
#include "framework/iot_json_utility.h"

/// The optional keys of an element, in their order. Each is added only when it has content.
struct ElementEnding {
  std::string options{};      ///< "uiop": the values a combobox offers
  Range range{};              ///< "min" and "max"; an end that the range lacks reads as 0
  std::string description{};  ///< "desc": the option list
  std::string unit{};         ///< "u"
};

/// Adds the ending to `*element`. IOT_STATUS_JSON_ERROR, and `*element` freed and null, when there
/// is no element to end.
Status end_element(json_t** element, const ElementEnding& ending);

/// Runs `build`, which makes `*out` and ends it, and returns its status. What throws on the way
/// (memory running out) frees the element: IOT_STATUS_NOT_READY.
template <typename Build>
Status build_element(json_t** out, const Build& build) {
  *out = nullptr;
  try {
    return build();
  } catch (...) {
    IoTJsonUtility::free_json_obj(out);
    return IOT_STATUS_NOT_READY;
  }
}
