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
#include "framework/row_table.h"
#include "framework/text_item.h"
using namespace catalogue;
constexpr Shape kNumber{.role = Role::kReading, .kind = Kind::kInteger};
constexpr Shape kText{.role = Role::kReading, .kind = Kind::kText};
std::string text_of(unsigned int word);
Status decode(const Row& row, const WordReader& device, std::string& out);
constexpr Row number(unsigned int id) { return {.id = id, .code = 1, .as = kNumber}; }
"""
ROW_TABLE = "constexpr Row kRows[] = {%s}; constexpr RowTable kTable(kRows);"
FIELDS = "constexpr Row kRows[] = {%s}; constexpr auto kPlaces = text_item::places_of(kRows);"
HEADING = "constexpr Row kRows[] = {%s}; constexpr Ids kIds = items_under(kRows, 0x14140200);"
MANY = "constexpr std::array<Row, %d> kRows = [] { std::array<Row, %d> rows; " \
       "for (unsigned int at = 0; at < rows.size(); ++at) { rows[at].id = 0x14140000 + at; } " \
       "return rows; }(); constexpr RowTable kTable(kRows);"
ORDER = "the rows are not in ascending order of their IDs"
GAP = "the items of a group have a gap among their IDs"
NO_KIND = "a field that is no text, integer or real (column `as`)"
TEXT = "a text item without its function, or another item with one"
FIELD_TEXT = "a number with a function for its text"
DECODER = "a field of several words without its decoder, or another field with one"

CASES = (
    (ROW_TABLE % "number(0x14140100), number(0x14140101)", None),
    (ROW_TABLE % "number(0x14140101), number(0x14140100)", ORDER),
    (ROW_TABLE % "number(0x14140100), number(0x14140100)", ORDER),
    (ROW_TABLE % "number(0x14140100), number(0x14140102), number(0x14140101)", ORDER),
    (ROW_TABLE % "{.id = 1, .code = 1, .as = kText, .text = text_of}", None),
    (ROW_TABLE % "{.id = 1, .code = 1, .as = kText}", TEXT),
    (ROW_TABLE % "{.id = 1, .code = 1, .as = kNumber, .text = text_of}", TEXT),
    (MANY % (254, 254), None),
    (MANY % (255, 255), "too many rows for the index"),
    (HEADING % "{.id = 0x14140200}, number(0x14140201), number(0x14140202), number(0x14140301)",
     None),
    (HEADING % "{.id = 0x14140200}, number(0x14140201), number(0x14140203)", GAP),
    (HEADING % "{.id = 0x14140200}, number(0x14140301)", "a group has no items"),
    (FIELDS % "number(0x14190100), number(0x14190200)", None),
    (FIELDS % "number(0x14190100), number(0x14190180)", "two fields in one group"),
    (FIELDS % "{.id = 0x14190000, .as = kNumber}", "a field without a code"),
    (FIELDS % "{.id = 0x14190100, .code = 1}", NO_KIND),
    (FIELDS % "{.id = 0x14190100, .code = 1, .words = 2, .as = kText, .decode = decode}", None),
    (FIELDS % "{.id = 0x14190100, .code = 1, .words = 2, .as = kText}", DECODER),
    (FIELDS % "{.id = 0x14190100, .code = 1, .asks_first = 2, .as = kText}", DECODER),
    (FIELDS % "{.id = 0x14190100, .code = 1, .as = kText, .decode = decode}", DECODER),
    (FIELDS % "{.id = 0x14190100, .code = 1, .as = kNumber, .text = text_of}", FIELD_TEXT),
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
        for file, line in re.findall(r"^(?:\./)?(<stdin>|framework/\S+\.h):(\d+):",
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
