// What docs/items.md says of families and items that the catalogues do not hold.
#include "docs/items_notes.h"

#include <fmt/format.h>

#include <array>
#include <set>
#include <stdexcept>

namespace items_document {

const std::string_view kIntroduction = R"(# Items

<!-- Made by scripts/items.sh from the catalogues in devices/; do not edit. -->

Every item that the module can publish, in the order of the capability document. Which of them a
machine has, the document tells.

- **ID**: what `KovaIoTGetMDValue` and `KovaIoTSetMDValue` take. Bits 31..24 are the module, 23..16
  the family, 15..8 the group.
- **Unit**: as published, in the item's "u" or, where all items of a package share it, in the
  package's "bu". "Celsuis" is spelled so.
- **Options**: the list that "desc" holds, there joined by `|`.
- **Range**: "min" and "max": advice that no write is held to.
- **Access**: "asm": `r` read, `rw` read and write, `w` a factory default (it can be read too).
- **JSON**: the key that holds the value in the document, and the JSON type to hand to a single
  read.
- **Raw code**: the code under which the device library knows the value, for reads and writes
  unless a second code is given. Raw values are unsigned 32-bit words; *raw* in a note is that word.
)";

const std::string_view kSdram =
    R"(M is the module's number from 1; its package is named `SDRAM` and M - 1. S = (M - 1) × `0x100`.
The library tells sixteen modules apart. Present when the module count, code `0xA00000`, is not 0.
A field that cannot be read is "N/A" in the document, or 0 where it is a number.)";

const std::string_view kSmartBattery =
    R"(Present when code `0xB00000` can be read. A field that cannot be read is "N/A" in the document, or
0 where it is a number. Raw codes are `0xB00000` and the Smart Battery Data command, except those of
the manufacturer's name and the state of health.)";

const std::string_view kTrk7000 =
    R"(Present when code `0x800000` is not 0. Fans and temperatures stand in the document twice: here and,
under the same IDs, in the family `Hardware Monitor` (packages `Fan Speed` `0x00020300` and
`Temperature` `0x00020100`).)";

const std::string_view kPoE =
    R"(P is the port's number from 1. Present when code `0x200000` is not 0; there are eight ports when
code `0x260007` is 1, else four when code `0x260003` is 1.)";

const std::string_view kPic =
    R"(Present when code `0x600008` is not 0. The ranges of settings and their defaults are what the device
reports for setting n under the codes `0x6B0000` + n - 1 (minimum) and `0x6C0000` + n - 1 (maximum);
the ranges below stand where it does not. Factory defaults cannot be changed: a write to one sets
the setting of that name.)";

const std::string_view kGSensor =
    R"(Present when code `0x400000` is not 0. A single read fills the value and still answers
`IOT_STATUS_READ_FAILED`: see the [host guide](host-guide.md#the-accelerometers-status).
The document takes switches and codes from the low byte of raw, a single read from all of it.)";

namespace {

// One note for the items first..last.
struct Note {
  unsigned int first;
  unsigned int last;
  std::string_view text;
};

constexpr std::array kNotes{
    // PoE, of port 1.
    Note{0x14140201, 0x14140201, "raw × 0.001"},
    Note{0x14140401, 0x14140401, "raw × 0.001, under the unit mA: raw 250 is published as 0.25"},
    Note{0x14140801, 0x14140801, "low byte of raw in the document, all of raw in a single read"},
    Note{0x14140901, 0x14140901, "low byte of raw in the document, all of raw in a single read"},
    Note{0x14140B01, 0x14140B01,
         "write an integer: 1 or more is on, else off; the options are not in the document"},
    // Accelerometer.
    Note{0x14150711, 0x14150713, "write an integer: more than 0 is 1, else 0"},
    Note{0x14150721, 0x14150723,
         "raw, signed, × 0.0001; write a real or an integer: value × 10000, truncated"},
    Note{0x14150731, 0x14150731, "write an integer; 0 can be read"},
    Note{0x14150732, 0x14150741, "write an integer"},
    Note{0x14150901, 0x14150903, "raw, signed, × 0.0001"},
    // Power and ignition controller.
    Note{0x14160601, 0x14160601, "\"V.\" and the low byte of raw"},
    Note{0x14160602, 0x14160604, "the label as text"},
    Note{0x14160711, 0x14160715, "write an integer"},
    Note{0x14160716, 0x14160717, "raw × 0.1; write a real or an integer: value × 10, truncated"},
    Note{0x14160718, 0x14160719, "write an integer"},
    Note{0x1416071A, 0x1416071A, "write an integer: more than 0 is 1, else 0"},
    Note{0x1416071B, 0x1416071B, "write an integer"},
    Note{0x14160726, 0x14160727, "raw × 0.1"},
    Note{0x14160803, 0x14160803, "raw × 0.1"},
    // Add-on board.
    Note{0x14170111, 0x14170124, "raw is tenths of a kelvin; whole degrees"},
    Note{0x14170601, 0x14170601, "letter and two numbers: raw 0x00560102 is V1.2"},
    Note{0x14170602, 0x14170602, "as the firmware version, the first number hexadecimal"},
    Note{0x14170603, 0x14170603, "as the firmware version"},
    // Memory modules, of module 1.
    Note{0x14180101, 0x14180101, "name of the DRAM device type, SPD byte 2"},
    Note{0x14180201, 0x14180201, "name of the module type of DDR3, DDR4 and DDR5, else N/A"},
    Note{0x14180601, 0x14180601, "raw × 0.001"},
    Note{0x14180801, 0x14180801, "year and week: 23-15"},
    Note{0x14180901, 0x14180901, "raw is hundredths of a kelvin"},
    Note{0x14180A01, 0x14180A01, "Enable or Disable; series VLX- only, else N/A"},
    Note{0x14180B01, 0x14180C01, "name by JEP106"},
    Note{0x14181101, 0x14181101, "20 characters, trailing blanks included"},
    Note{0x14182101, 0x14182101, "32 characters; series VLX- only, else N/A"},
    // Battery.
    Note{0x14190100, 0x14190100, "AC Power while no current flows, else Charging or Discharging"},
    Note{0x14190200, 0x14190200, "20 characters, trailing blanks included"},
    Note{0x14190300, 0x14190300, "year/month/day: 2025/1/31"},
    Note{0x14190400, 0x14190400, "four hexadecimal digits: 0x0012"},
    Note{0x14190800, 0x14190800, "low 16 bits of raw, signed: negative while discharging"},
    Note{0x14190E00, 0x14190F00,
         "text such as 2 h 5 m; N/A, and in a single read `IOT_STATUS_NOT_FOUND`, while no current "
         "flows or the battery cannot tell"},
    Note{0x14191100, 0x14191100, "raw is tenths of a kelvin"},
    Note{0x14191200, 0x14191200, "error bits 3..0 of BatteryStatus: 0x7"},
};

std::set<const Note*>& used() {
  static std::set<const Note*> notes;
  return notes;
}

}  // namespace

std::string_view note_of(unsigned int id) {
  for (const Note& note : kNotes) {
    if (note.first <= id && id <= note.last) {
      used().insert(&note);
      return note.text;
    }
  }
  return "";
}

void check_all_used() {
  for (const Note& note : kNotes) {
    if (!used().contains(&note)) {
      throw std::runtime_error(fmt::format("note of 0x{:08X}: there is no such item", note.first));
    }
  }
}

}  // namespace items_document
