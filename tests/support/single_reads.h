// Single reads held against the reference document, for the families whose readings are texts.
#pragma once

#include <gtest/gtest.h>

#include "tests/support/documents.h"

/// A value of the JSON type of `like` that the device cannot have set.
inline JsonOwner other_value(const json_t* like) {
  return JsonOwner(json_is_string(like) ? json_string("?")
                   : json_is_real(like) ? json_real(0.5)
                                        : json_integer(-77));
}

/// Reads every item of a family's packages that could be read, and compares it with the document.
template <typename Adapter>
void expect_single_reads(const Adapter& adapter, const char* family, unsigned int expected_count) {
  const JsonOwner document = reference_document();
  unsigned int count = 0;
  const char* key = nullptr;
  json_t* package = nullptr;
  json_object_foreach(json_object_get(document.get(), family), key, package) {
    std::size_t index = 0;
    json_t* element = nullptr;
    json_array_foreach(json_object_get(package, "e"), index, element) {
      const json_t* number = json_object_get(element, "v");
      const json_t* published = number != nullptr ? number : json_object_get(element, "sv");
      const json_int_t id = json_integer_value(json_object_get(element, "id"));
      const JsonOwner value = other_value(published);
      if (adapter.get_value_by_id(static_cast<unsigned int>(id), value.get()) == 0) {
        EXPECT_TRUE(json_equal(value.get(), published)) << std::hex << id;
        ++count;
      }
    }
  }
  EXPECT_EQ(count, expected_count);
}
