"""items.json against the reference machine: what it says of an item is what a host sees of it.

Usage: items_test.py ITEMS_JSON TEST_DATA ITEMS_DOCUMENT
"""
import itertools
import json
import math
import pathlib
import subprocess
import sys
import unittest

ITEMS, DATA = (pathlib.Path(argument) for argument in sys.argv[1:3])
LIST = json.loads(ITEMS.read_text())
DOCUMENT = json.loads((DATA / "reference_document.json").read_text())
WORDS = {int(code, 16): word for code, word in
         json.loads((DATA / "reference_machine.json").read_text())["codes"].items()}
FAMILIES = {family["name"]: family for family in LIST["families"]}
VALUE_KEYS = {"switch": "bv", "integer": "v", "real": "v", "text": "sv"}
ACCESS = {"setting": "rw", "default": "w", "identity": "r", "reading": "r", "state": "r"}
FORM = {"switch": "switch", "real": "scaled", "integer": "integer"}
ALL_ITEMS = {item["id"]: item for family in LIST["families"]
             for package in family["packages"] for item in package["items"]}


def packages_shown():
    """Each package of the document with what items.json says of it, and its number from 0."""
    for family in LIST["families"]:
        shown = [value for value in DOCUMENT[family["name"]].values() if isinstance(value, dict)]
        for number, package in enumerate(shown):
            told = family["packages"][0 if "instances" in family else number]
            yield family, told, package, number if "instances" in family else 0


def items_shown():
    for family, told, package, number in packages_shown():
        for item, element in itertools.zip_longest(told["items"], package["e"], fillvalue={}):
            if not item or not element:
                raise AssertionError(f"{family['name']}: {(item or element)['id']:#x} stands in only one "
                                     "of items.json and tests/data/reference_document.json")
            yield family, item, element, package, number


def word(item, family, number):
    """The item's last word on the reference machine, as items.json says that it counts."""
    code = item["codes"][-1] + number * family.get("instances", {}).get("code_step", 0)
    if code not in WORDS:
        raise AssertionError(f"tests/data/reference_machine.json lacks {code:#x}")
    raw = WORDS[code]
    bits = {"signed": 32, "low 16 signed": 16}.get(item.get("word"))
    if bits is None:
        return raw
    raw %= 1 << bits
    return raw - (raw >> (bits - 1) << bits)


class Items(unittest.TestCase):
    def test_packages_are_those_of_the_document(self):
        for family, told, package, number in packages_shown():
            with self.subTest(package["bn"]):
                self.assertEqual(told["name"].format(n=number + 1, i=number), package["bn"])
                self.assertEqual(told["id"] + number, package["id"])
                self.assertEqual(DOCUMENT[family["name"]]["id"], family["id"])
        board = FAMILIES["TRK-7000"]
        self.assertEqual([(also["family"], also["package"]) for also in board["also"]],
                         [("Hardware Monitor", "Fan Speed"), ("Hardware Monitor", "Temperature")])
        for also in board["also"]:
            again = DOCUMENT[also["family"]][also["package"]]
            of = [package for package in board["packages"] if package["id"] == also["of"]][0]
            self.assertEqual(again["id"], also["package_id"])
            self.assertEqual([element["id"] for element in again["e"]],
                             [item["id"] for item in of["items"]])

    def test_items_are_the_elements(self):
        for family, item, element, package, number in items_shown():
            step = family.get("instances", {}).get("id_step", 0)
            with self.subTest(element["n"]):
                self.assertEqual(item["name"].format(n=number + 1, i=number), element["n"])
                self.assertEqual(item["id"] + number * step, element["id"])
                self.assertEqual(item.get("unit", ""), element.get("u", package["bu"]))
                self.assertEqual((item["access"], item["ui"]), (element["asm"], element["ui"]))
                self.assertEqual(item["access"], ACCESS[item["role"]])
                if family["name"] != "PIC" or item["access"] == "r":  # whose device has its own
                    self.assertEqual((item.get("min"), item.get("max")),
                                     (element.get("min"), element.get("max")))
                self.assertIn(VALUE_KEYS[item["kind"]], element)
                self.assertEqual("|".join(map(str, item.get("offered", []))),
                                 element.get("uiop", ""))
                options = "|".join(f"{option['value']}={option['label']}"
                                   for option in item.get("options", []))
                if family["name"] != "PoE":  # whose options are not in the document
                    self.assertEqual(options, element.get("desc", "").replace("\n", ""))

    def test_words_become_the_values(self):
        for family, item, element, _, number in items_shown():
            if item["kind"] == "text":
                continue
            with self.subTest(element["n"]):
                value = word(item, family, number) * item.get("scale", 1) + item.get("offset", 0)
                if item["kind"] == "switch":
                    bits = 8 if family["name"] in ("PoE", "GSensor") else 32
                    self.assertEqual(element["bv"], int(value % (1 << bits) != 0))
                elif item["kind"] == "real":
                    self.assertAlmostEqual(element["v"], value, delta=1e-5 * max(1, abs(value)))
                elif "low byte" in item.get("note", ""):
                    self.assertEqual(element["v"], value % 256)
                else:  # the document has 32 signed bits for it
                    self.assertEqual((element["v"] - math.trunc(value)) % (1 << 32), 0)
                    self.assertTrue(float(value).is_integer() or item["truncated"])

    def test_statuses_that_only_one_family_has_are_those_of_its_reads(self):
        codes = {"READ_FAILED": 0xFFFFFAFF, "NOT_FOUND": 0xFFFFFBFF, "UNSUPPORTED": 0xFFFFFCFF}
        for name, file in (("GSensor", "gsensor"), ("SMART BATTERY", "sbattery"), ("SDRAM", "sdram")):
            for case in json.loads((DATA / "items" / f"{file}.json").read_text()):
                status = codes.get(case.get("status"))
                if int(case.get("get", "0"), 16) not in ALL_ITEMS:
                    continue
                with self.subTest(case["why"]):
                    if "gives" in case and case["value"] != {}:
                        self.assertEqual(FAMILIES[name].get("status_when_read"), status)
                    elif status in (codes["NOT_FOUND"], codes["UNSUPPORTED"]):
                        self.assertEqual(FAMILIES[name]["status_without_value"], status)

    def test_presence_and_instances_are_asked_as_told(self):
        for family in LIST["families"]:
            with self.subTest(family["name"]):
                answer = WORDS[family["presence"]["code"]]
                self.assertEqual(family["presence"]["present"], "nonzero" if answer else "readable")
                if "instances" in family:
                    count = next(step.get("count", WORDS[step["code"]])
                                 for step in family["instances"]["counted_by"]
                                 if WORDS[step["code"]] == step.get("equals", WORDS[step["code"]]))
                    shown = [value for value in DOCUMENT[family["name"]].values()
                             if isinstance(value, dict)]
                    self.assertEqual(count, len(shown))
        self.assertEqual(FAMILIES["SDRAM"]["instances"]["max"], 255)
        self.assertEqual(FAMILIES["PoE"]["instances"]["max"], 8)

    def test_writes_go_where_the_module_writes(self):
        for table in (DATA / "items").glob("*.json"):
            for case in json.loads(table.read_text()):
                item = ALL_ITEMS.get(int(case.get("set", "0"), 16))
                written = [call.split()[1] for call in case.get("calls", []) if "write" in call]
                if item and written:
                    with self.subTest(case["why"]):
                        self.assertEqual(item["write_code"], int(written[0], 16))
        for item in ALL_ITEMS.values():
            with self.subTest(item["name"]):
                self.assertEqual(item.get("written_as"),
                                 FORM[item["kind"]] if item["access"] != "r" else None)
                self.assertEqual("factory_default_of" in item, item["role"] == "default")
                if "factory_default" in item:
                    default = ALL_ITEMS[item["factory_default"]]
                    self.assertEqual(default["factory_default_of"], item["id"])
                    self.assertEqual((default["name"], default["write_code"]),
                                     (item["name"], item["write_code"]))

    def test_a_list_that_cannot_be_made_or_written_ends_the_build(self):
        with open("/dev/full", "w", encoding="utf-8") as full:
            for arguments, output, code in ((["--json"], full, 1), ([], subprocess.PIPE, 2),
                                            (["--yaml"], subprocess.PIPE, 2),
                                            (["--json", "--json"], subprocess.PIPE, 2)):
                made = subprocess.run([sys.argv[3], *arguments], stdout=output,
                                      stderr=subprocess.PIPE, check=False)
                self.assertEqual(made.returncode, code, arguments)
                self.assertEqual(made.stderr.startswith(b"usage: "), code == 2)

    def test_notes_are_one_line_of_whole_sentences(self):
        notes = [family["note"] for family in LIST["families"] if "note" in family]
        self.assertGreater(len(notes), 0)
        for note in notes:
            self.assertRegex(note, r"\A[A-Z].*\.\Z")

    def test_what_tells_machines_apart_is_private(self):
        private = {item["name"] for item in ALL_ITEMS.values() if item.get("private")}
        self.assertLessEqual({"Part Number", "Specific Data", "Serial Number"}, private)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
