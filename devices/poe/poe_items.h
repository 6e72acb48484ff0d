// The PoE ports: the IDs of their items, which are a kind plus the port number, and their sheet.
#pragma once

#include "framework/row_check.h"

namespace poe {

inline constexpr unsigned int kFamily = 0x14140000;
inline constexpr unsigned int kPresence = 0x14140001;
inline constexpr unsigned int kVoltage = 0x14140200;
inline constexpr unsigned int kCurrent = 0x14140400;
inline constexpr unsigned int kDetect = 0x14140800;
inline constexpr unsigned int kClass = 0x14140900;
inline constexpr unsigned int kPortProbe = 0x14140A00;
inline constexpr unsigned int kPower = 0x14140B00;

/// Refuses a kind of items that the ports cannot have. What it throws ends the compilation.
consteval void check_kind(const catalogue::Row& row) {
  using catalogue::Kind;
  using catalogue::Word;
  check_row(row);
  check_one_word(row);
  if (item_id::instance(row.id) != 0 || !row.code) {
    throw "a kind of items whose ID has a port, or without a code";
  }
  if (row.as.kind == Kind::kText || row.text != nullptr || row.as.through_text) {
    throw "a port's item that is a text";
  }
  const bool is_read_as_a_byte = row.as.kind == Kind::kInteger || row.as.kind == Kind::kSwitch;
  if (is_read_as_a_byte && row.as.word != Word::kLowByteInDocument) {
    throw "a port's integer or switch of more than a byte in the document";
  }
  if (takes_writes(row) && (row.as.kind == Kind::kReal || row.written_at != 0 ||
                            row.as.role == catalogue::Role::kDefault || !row.offered.empty())) {
    throw "a port's setting that is a real, written elsewhere, a default or offers values";
  }
}

extern const catalogue::Sheet kSheet;

}  // namespace poe
