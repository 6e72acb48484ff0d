// What the rules look for. Each gives nothing where all is well, and where it cannot be told.
#pragma once

#include "tools/host/judgements/judgement.h"

namespace kova_host {

inline constexpr std::string_view kPowerInput = "PIC/Real-time status/Power input";
inline constexpr std::string_view kBatteryType = "PIC/Information/Battery type";

// The item is there and cannot be read.
std::optional<Evidence> unreadable(const Case& at);

// The item was there once.
std::optional<Evidence> gone(const Case& at);

// A temperature of 0 K: none is that cold, it is a sensor that reports 0.
std::optional<Evidence> absolute_zero(const Case& at);

// A value beyond its published range, one that is turned over included. That of the power input
// counts only where the battery type tells no better one.
std::optional<Evidence> beyond_range(const Case& at);

// Above the limit's share of the published maximum, and not beyond that.
std::optional<Evidence> near_maximum(const Case& at);

// 0 while another of the sort is not.
std::optional<Evidence> stopped(const Case& at);

// Below, and above, the limit.
std::optional<Evidence> below_limit(const Case& at);
std::optional<Evidence> above_limit(const Case& at);

// The controller's battery type is "ERR".
std::optional<Evidence> no_battery_type(const Case& at);

// The power input below the low-battery threshold in force; above it, and nearer than the limit.
std::optional<Evidence> below_cut_off(const Case& at);
std::optional<Evidence> near_cut_off(const Case& at);

// The power input above what supplies of the battery type in force reach.
std::optional<Evidence> above_supply(const Case& at);

}  // namespace kova_host
