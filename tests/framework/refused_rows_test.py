"""Rows that contradict each other must not compile: what the compiler says of some that do.

KOVA_COMPILER is the compiler, KOVA_SOURCE the folder that its includes begin in.
"""
import os
import pathlib
import re
import subprocess
import unittest

BEGIN = """
#include <string>
#include "devices/poe/poe_items.h"
#include "framework/row_table.h"
#include "framework/text_item.h"
using namespace catalogue;
constexpr Shape kNumber{.role = Role::kReading, .kind = Kind::kInteger};
constexpr Shape kText{.role = Role::kReading, .kind = Kind::kText};
constexpr Shape kRead{.role = Role::kReading, .kind = Kind::kInteger, .through_text = true};
constexpr Shape kByte{.role = Role::kState, .kind = Kind::kInteger,
                      .word = Word::kLowByteInDocument};
constexpr Shape kPortSwitch{.role = Role::kSetting, .kind = Kind::kSwitch,
                            .word = Word::kLowByteInDocument};
constexpr Shape kSet{.role = Role::kSetting, .kind = Kind::kInteger};
std::string text_of(unsigned int word);
Status decode(const Row& row, const WordReader& device, std::string& out);
constexpr Row number(unsigned int id) { return {.id = id, .code = 1, .as = kNumber}; }
constexpr Row field(unsigned int id) { return {.id = id, .code = 1, .as = kRead}; }
"""
ROW_TABLE = "constexpr Row kRows[] = {%s}; constexpr RowTable kTable(kRows);"
FIELDS = "constexpr Row kRows[] = {%s}; constexpr auto kPlaces = text_item::places_of(kRows);"
TEXTS = "constexpr Row kRows[] = {{.id = 0x14140600}, {.id = 0x14140601, .code = 1, .as = kText, " \
        ".text = text_of}, %s}; constexpr RowTable kTable(kRows, {.texts = 0x14140600});"
SHAPE = "constexpr Row kRows[] = {{.id = 0x101, .code = 1, .as = {%s}}}; " \
        "constexpr RowTable kTable(kRows, {.settings = 0x100});"
SETTING = "constexpr Row kRows[] = {{.id = 0x101, %s}}; " \
          "constexpr RowTable kTable(kRows, {.settings = 0x100});"
SETTINGS = "constexpr Row kRows[] = {%s}; constexpr RowTable kTable(kRows, " \
           "{.settings = 0x14140700, .written_from = 0x14140730});"
PORTS = "constexpr bool kIsChecked = []() consteval { poe::check_kind({%s}); return true; }();"
HEADING = "constexpr Row kRows[] = {%s}; constexpr Ids kIds = items_under(kRows, 0x14140200);"
MANY = "constexpr std::array<Row, %d> kRows = [] { std::array<Row, %d> rows; " \
       "for (unsigned int at = 0; at < rows.size(); ++at) { rows[at].id = 0x14140000 + at; } " \
       "return rows; }(); constexpr RowTable kTable(kRows);"
ORDER = "the rows are not in ascending order of their IDs"
GAP = "the items of a group have a gap among their IDs"
NO_KIND = "a field that is no text, integer or real (column `as`)"
TEXT = "a text item without its function, or another item with one"
TEXT_GROUP = "a text outside the group of the texts, or another item in it"
FIELD_TEXT = "a number with a function for its text"
DECODER = "a field of several words without its decoder, or another field with one"
ONE_WORD = "a column of decoded texts, in a family without"
SCALED = "a scale or an offset, but neither a real nor a truncated integer"
NO_STEP = "a scale or a divisor of 0"
WAY_BACK = "a setting that is a text, truncated or has an offset"
STEPS = "a setting of which a unit is no whole number of steps"
NO_SETTING = "a column of settings, but no setting"
GROUP = "a setting outside the group that takes writes"
TARGET = "a setting that is not written where its family's are (column `written_at`)"
DEFAULT = "a default without its setting, or a setting with one"
NO_FIELD_SETTING = "a field that takes writes or has options"
PORT_TEXT = "a port's item that is a text"
PORT_BYTE = "a port's integer or switch of more than a byte in the document"
PORT_SETTING = "a port's setting that is a real, written elsewhere, a default or offers values"

CASES = (
    (ROW_TABLE % "number(0x14140100), number(0x14140101)", None),
    (ROW_TABLE % "number(0x14140101), number(0x14140100)", ORDER),
    (ROW_TABLE % "number(0x14140100), number(0x14140100)", ORDER),
    (ROW_TABLE % "number(0x14140100), number(0x14140102), number(0x14140101)", ORDER),
    (MANY % (254, 254), None),
    (MANY % (255, 255), "too many rows for the index"),
    (HEADING % "{.id = 0x14140200}, number(0x14140201), number(0x14140202), number(0x14140301)",
     None),
    (HEADING % "{.id = 0x14140200}, number(0x14140201), number(0x14140203)", GAP),
    (HEADING % "{.id = 0x14140200}, number(0x14140301)", "a group has no items"),

    # Texts and numbers of a family with maps.
    (TEXTS % "{.id = 0x14140602, .code = 2, .as = kText, .text = text_of}", None),
    (TEXTS % "{.id = 0x14140602, .code = 2, .as = kText}", TEXT),
    (TEXTS % "number(0x14140602)", TEXT_GROUP),
    (TEXTS % "{.id = 0x14140701, .code = 2, .as = kText, .text = text_of}", TEXT_GROUP),
    (ROW_TABLE % "{.id = 1, .code = 1, .as = kText, .text = text_of}", TEXT_GROUP),
    (ROW_TABLE % "{.id = 1, .code = 1, .as = kNumber, .text = text_of}", TEXT),
    (ROW_TABLE % "{.id = 1, .code = 1, .words = 2, .as = kNumber}", ONE_WORD),
    (ROW_TABLE % "{.id = 1, .code = 1, .asks_first = 2, .as = kNumber}", ONE_WORD),
    (ROW_TABLE % "{.id = 1, .code = 1, .as = kNumber, .decode = decode}", ONE_WORD),
    (ROW_TABLE % "field(1)", "through its text, in a family whose numbers have none"),
    (SHAPE % ".role = Role::kState", "a role without a kind"),
    (SHAPE % ".kind = Kind::kReal, .answer = Answer::kWord",
     "the answer follows from the columns: it cannot be told"),
    (SHAPE % ".kind = Kind::kReal, .word = Word::kLow16Signed, .divisor = 10, .offset = -1", None),
    (SHAPE % ".kind = Kind::kReal, .scale = 0", NO_STEP),
    (SHAPE % ".kind = Kind::kReal, .divisor = 0", NO_STEP),
    (SHAPE % ".kind = Kind::kInteger, .scale = 0.1", SCALED),
    (SHAPE % ".kind = Kind::kInteger, .offset = 1", SCALED),
    (SHAPE % ".kind = Kind::kSwitch, .divisor = 10", SCALED),
    (SHAPE % ".kind = Kind::kInteger, .scale = 0.1, .truncated = true", None),
    (SHAPE % ".kind = Kind::kInteger, .truncated = true",
     "truncated to an integer of more than 32 bits"),
    (SHAPE % ".kind = Kind::kReal, .truncated = true", "truncated, but no integer"),
    (SHAPE % ".kind = Kind::kInteger, .normalised = true", "normalised, but no switch"),
    (SHAPE % ".kind = Kind::kSwitch, .through_text = true", "through its text, but no number"),
    (SHAPE % ".kind = Kind::kText, .word = Word::kSigned",
     "a text of a part of its word: its function is given the whole"),

    # Settings.
    (SHAPE % ".role = Role::kSetting, .kind = Kind::kReal, .scale = 0.1", None),
    (SHAPE % ".role = Role::kSetting, .kind = Kind::kReal, .scale = 10", STEPS),
    (SHAPE % ".role = Role::kSetting, .kind = Kind::kReal, .scale = 0.3", STEPS),
    (SHAPE % ".role = Role::kSetting, .kind = Kind::kReal, .offset = 1", WAY_BACK),
    (SHAPE % ".role = Role::kSetting, .kind = Kind::kText", WAY_BACK),
    (SHAPE % ".role = Role::kSetting, .kind = Kind::kInteger, .scale = 0.1, .truncated = true",
     WAY_BACK),
    (SHAPE % ".role = Role::kDefault, .kind = Kind::kInteger", DEFAULT),
    (SETTING % ".code = 1, .as = kSet, .written_at = 1", TARGET),
    (SETTING % ".code = 1, .as = kSet, .default_of = 1", DEFAULT),
    (SETTING % '.offered = "1|2", .code = 1, .as = {.role = Role::kSetting, .kind = Kind::kSwitch}',
     "a switch that offers values"),
    (SETTING % '.offered = "1|2", .code = 1, .as = kNumber', NO_SETTING),
    (SETTING % ".code = 1, .as = kNumber, .written_at = 1", NO_SETTING),
    (SETTING % ".code = 1, .as = kNumber, .default_of = 1", NO_SETTING),
    (ROW_TABLE % "{.id = 1, .code = 1, .as = kSet}", GROUP),
    (SETTINGS % "{.id = 0x14140801, .code = 1, .as = kSet}", GROUP),
    (SETTINGS % "{.id = 0x14140701, .code = 1, .as = kSet, .written_at = 0x14140731}", None),
    (SETTINGS % "{.id = 0x14140701, .code = 1, .as = kSet, .written_at = 0x14140732}", TARGET),
    (SETTINGS % "{.id = 0x14140701, .code = 1, .as = kSet}", TARGET),

    # Fields of a family whose readings are texts.
    (FIELDS % "field(0x14190100), field(0x14190200)", None),
    (FIELDS % "field(0x14190100), field(0x14190180)", "two fields in one group"),
    (FIELDS % "{.id = 0x14190000, .as = kRead}", "a field without a code"),
    (FIELDS % "{.id = 0x14190100, .code = 1}", NO_KIND),
    (FIELDS % "{.id = 0x14190100, .code = 1, .words = 2, .as = kText, .decode = decode}", None),
    (FIELDS % "{.id = 0x14190100, .code = 1, .words = 2, .as = kText}", DECODER),
    (FIELDS % "{.id = 0x14190100, .code = 1, .asks_first = 2, .as = kText}", DECODER),
    (FIELDS % "{.id = 0x14190100, .code = 1, .as = kText, .decode = decode}", DECODER),
    (FIELDS % "{.id = 0x14190100, .code = 1, .as = kRead, .text = text_of}", FIELD_TEXT),
    (FIELDS % "{.id = 0x14190100, .code = 1, .words = 2, .as = kText, .text = text_of, "
     ".decode = decode}", "a field with two functions for its text"),
    (FIELDS % "number(0x14190100)", "a field's number is read through its text (column `as`)"),
    (FIELDS % '{.id = 0x14190100, .options = "0=A", .code = 1, .as = kText}', NO_FIELD_SETTING),
    (FIELDS % "{.id = 0x14190100, .code = 1, .as = {.role = Role::kSetting, "
     ".kind = Kind::kInteger, .through_text = true}}", NO_FIELD_SETTING),

    # Ports.
    (PORTS % ".id = 0x14140800, .code = 1, .as = kByte", None),
    (PORTS % ".id = 0x14140801, .code = 1, .as = kByte",
     "a kind of items whose ID has a port, or without a code"),
    (PORTS % ".id = 0x14140800, .code = 1, .as = kNumber", PORT_BYTE),
    (PORTS % ".id = 0x14140800, .code = 1, .as = kText", PORT_TEXT),
    (PORTS % ".id = 0x14140800, .code = 1, .as = kRead", PORT_TEXT),
    (PORTS % ".id = 0x14140800, .code = 1, .words = 2, .as = kByte", ONE_WORD),
    (PORTS % ".id = 0x14140800, .code = 1, .as = kPortSwitch", None),
    (PORTS % ".id = 0x14140800, .code = 1, .as = kPortSwitch, .written_at = 1", PORT_SETTING),
)


class RefusedRows(unittest.TestCase):
    def test_tell_their_mistake(self):
        cases = [f"namespace n{at} {{ {code} }}" for at, (code, _) in enumerate(CASES)]
        compiler = os.environ["KOVA_COMPILER"]
        all_errors = ["-ferror-limit=0"] if "clang" in compiler else []
        compiled = subprocess.run(
            [compiler, "-std=c++20", "-fsyntax-only", *all_errors, "-I.", "-x", "c++", "-"],
            input="\n".join([BEGIN, "#line 1", *cases]),
            cwd=os.environ["KOVA_SOURCE"], capture_output=True, text=True)
        mistakes, case = {}, 0
        for file, line in re.findall(r"^(?:\./)?(<stdin>|(?:framework|devices)/\S+\.h):(\d+):",
                                     compiled.stderr, re.MULTILINE):
            if file == "<stdin>":
                case = int(line)
                mistakes.setdefault(case, "refused for another reason")
                continue
            text = pathlib.Path(os.environ["KOVA_SOURCE"], file).read_text().splitlines()
            if thrown := re.search(r'throw "(.*)"', text[int(line) - 1]):
                mistakes[case] = thrown[1]
        for at, (code, mistake) in enumerate(CASES, 1):
            with self.subTest(code):
                self.assertEqual(mistakes.get(at), mistake, compiled.stderr)


if __name__ == "__main__":
    unittest.main()
