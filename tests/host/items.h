// Items and readings for the tests of the host library, and what a call is refused with.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "tools/host/system/errors.h"
#include "tools/host/values/reading.h"

namespace kova_host {

inline Item item_named(std::string family, std::string package, std::string name, uint32_t id) {
  Item item;
  item.id = id;
  item.family = std::move(family);
  item.package = std::move(package);
  item.name = std::move(name);
  return item;
}

// F/P 1/nID
inline Item item_of(uint32_t id, Role role, std::optional<ValueKind> kind, std::string unit = "",
                    std::string_view options = "", std::optional<double> min = {},
                    std::optional<double> max = {}) {
  Item item = item_named("F", "P 1", "n" + std::to_string(id), id);
  item.facts.role = role;
  item.kind = kind;
  item.unit = std::move(unit);
  item.options = parse_options(options);
  item.min = min;
  item.max = max;
  return item;
}

inline Reading good(decltype(Reading::value) value) {
  return {Reading::State::good, 0, std::move(value)};
}

inline Reading failed(uint32_t status) {
  return {Reading::State::failed, status, {}};
}

inline const Reading kAbsent = {Reading::State::absent, 0, {}};

// The message of the usage error that a call ends with; "" if it ends well.
template <typename Call>
std::string refusal(Call call) {
  try {
    call();
    return "";
  } catch (const HostError& error) {
    EXPECT_EQ(error.fault(), Fault::usage) << error.what();
    return error.what();
  }
}

}  // namespace kova_host
