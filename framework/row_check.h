// Columns of a row that contradict each other, or that no family could obey, do not compile. What
// these functions throw ends the compilation, and is what the compiler shows.
#pragma once

#include "framework/conversion.h"

namespace catalogue {

consteval bool is_number(const Shape& as) {
  return as.kind == Kind::kInteger || as.kind == Kind::kReal;
}

consteval bool is_scaled(const Shape& as) {
  return as.scale != 1 || as.divisor != 1 || as.offset != 0;
}

consteval void check_shape(const Shape& as) {
  if (as.role != Role::kNone && as.kind == Kind::kNone) {
    throw "a role without a kind";
  }
  if (as.scale == 0 || as.divisor == 0) {
    throw "a scale or a divisor of 0";
  }
  if (is_scaled(as) && as.kind != Kind::kReal && !as.truncated) {
    throw "a scale or an offset, but neither a real nor a truncated integer";
  }
  if (as.truncated && as.kind != Kind::kInteger) {
    throw "truncated, but no integer";
  }
  constexpr double kEnd = 2147483648.0;  // beyond 32 bits the document would not show it
  for (const std::uint32_t raw : {0U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
    if (as.truncated && (real_of(as, raw) >= kEnd || real_of(as, raw) <= -kEnd)) {
      throw "truncated to an integer of more than 32 bits";
    }
  }
  if (as.answer != answer_of(as.kind, as.word, as.truncated, as.normalised, as.through_text)) {
    throw "the answer follows from the columns: it cannot be told";
  }
  if (as.normalised && as.kind != Kind::kSwitch) {
    throw "normalised, but no switch";
  }
  if (as.through_text && !is_number(as)) {
    throw "through its text, but no number";
  }
  if (as.kind == Kind::kText && as.word != Word::kWhole) {
    throw "a text of a part of its word: its function is given the whole";
  }
}

/// Writes go the way back only where it is one.
consteval void check_written(const Row& row) {
  if (!takes_writes(row)) {
    if (row.written_at != 0 || row.default_of != 0 || !row.offered.empty()) {
      throw "a column of settings, but no setting";
    }
    return;
  }
  if (row.as.kind == Kind::kText || row.as.truncated || row.as.offset != 0) {
    throw "a setting that is a text, truncated or has an offset";
  }
  const double steps = 1 / step_of(row.as);
  if (steps_per_unit(row.as) - steps > 1e-9 * steps ||
      steps - steps_per_unit(row.as) > 1e-9 * steps) {
    throw "a setting of which a unit is no whole number of steps";
  }
  if (row.as.kind == Kind::kSwitch && !row.offered.empty()) {
    throw "a switch that offers values";
  }
  if ((row.as.role == Role::kDefault) != (row.default_of != 0)) {
    throw "a default without its setting, or a setting with one";
  }
}

consteval void check_row(const Row& row) {
  check_shape(row.as);
  check_written(row);
}

/// Refuses what only a text of more than one word needs.
consteval void check_one_word(const Row& row) {
  if (row.words != 1 || row.asks_first || row.decode != nullptr) {
    throw "a column of decoded texts, in a family without";
  }
}

}  // namespace catalogue
