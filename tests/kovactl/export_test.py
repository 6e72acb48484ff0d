"""Metrics and SenML: the formats' own rules, and the numbers in them."""
import os
import re
import stat
import unittest

from items import item_count
from program import FAKE_MODULE, VERSION, TestCase, full_disk, run


class Exposition:
    """Types and units by family, values by name and labels, of a text in either format.

    Lines that neither allows fail the test, and so does a sample outside its family's block.
    """
    HEADER = re.compile(r"# (TYPE|UNIT|HELP) ([a-z0-9_]+) (.+)")
    SAMPLE = re.compile(r'([a-z0-9_]+)((?:\{(?:[a-z_]+="(?:[^"\\]|\\.)*",?)+\})?) (-?[0-9.e+-]+)')

    def __init__(self, test, text):
        self.types, self.units, self.values = {}, {}, {}
        family = None
        test.assertTrue(text.endswith("\n"))
        for line in text.removesuffix("# EOF\n").splitlines():
            if header := self.HEADER.fullmatch(line):
                key, name, rest = header.groups()
                if key == "TYPE":
                    test.assertNotIn(name, self.types, "a split block")
                    family = name
                test.assertEqual(name, family)
                {"TYPE": self.types, "UNIT": self.units, "HELP": {}}[key][name] = rest
            else:
                sample = self.SAMPLE.fullmatch(line)
                test.assertTrue(sample, line)
                suffix = "_info" if self.types[family] == "info" else ""
                test.assertEqual(sample[1], family + suffix)
                test.assertNotIn(sample[1] + sample[2], self.values)
                self.values[sample[1] + sample[2]] = sample[3]


class Export(TestCase):
    def export(self, *arguments, **options):
        machine = self.machine(clock={"step_ms": 0}, codes={
            "0x00240001": {"fail_read": 5}, "0x00250000": 12100, "0x0062000A": 1})
        result = run([*machine, *arguments], options)
        self.assertEqual(result.exit_code, 1, result.err)  # for the item that cannot be read
        return result


class Metrics(Export):
    def test_carry_the_modules_numbers_once_each(self):
        text = self.export("metrics").out
        values = Exposition(self, text).values
        for name, family, package, item, rest, value in (
            ("voltage_volts", "PoE", "PoE 1", "PoE 1 voltage", '0x14140201"', "12.1"),
            ("voltage_maximum_volts", "PoE", "PoE 1", "PoE 1 voltage", '0x14140201"', "100"),
            ("setting_state", "PoE", "PoE 1", "PoE 1 power",
             '0x14140B01",kova_setting_state="Enable"', "1"),
            ("item_read_success", "PoE", "PoE 2", "PoE 2 current", '0x14140402"', "0"),
            ("current_amperes", "PoE", "PoE 2", "PoE 2 current", '0x14140402"', None),
            ("duration_seconds", "SMART BATTERY", "SMART BATTERY", "Average Time To Empty",
             '0x14190E00"', "10800"),
            ("default_duration_seconds", "PIC", "Default settings", "Low battery hard off",
             '0x14160729"', "120"),
            ("item_in_range", "PIC", "Settings", "Low battery hard off", '0x14160719"', "1"),
            ("identity_info", "SDRAM", "SDRAM0", "Part Number",
             '0x14181101",value="VLX-D4S8G3200-I"', "1"),
            ("state", "PIC", "Information", "V/P mode", '0x14160603",kova_state="PC mode"', "0"),
            ("state", "PIC", "Information", "V/P mode",
             '0x14160603",kova_state="Vehicle mode"', "1"),
        ):
            sample = f'kova_{name}{{family="{family}",package="{package}",item="{item}",id="{rest}}}'
            with self.subTest(sample=sample):
                self.assertEqual(values.get(sample), value)
        self.assertEqual(values[f'kova_build_info{{version="{VERSION}"}}'], "1")
        self.assertEqual(values["kova_up"], "1")
        self.assertLess(float(values["kova_sweep_duration_seconds"]), 5)

    def test_openmetrics_names_end_in_their_units(self):
        text = self.export("metrics", "--openmetrics").out
        self.assertTrue(text.endswith("\n# EOF\n"))
        metrics = Exposition(self, text)
        self.assertEqual(metrics.types["kova_identity"], "info")
        self.assertEqual(metrics.types["kova_state"], "stateset")
        self.assertEqual(metrics.units["kova_temperature_maximum_celsius"], "celsius")
        for family, unit in metrics.units.items():
            self.assertTrue(family.endswith("_" + unit), family)


class OutputFile(Export):
    GONE = r'{item="a \\ \"b\",family=\"x\"",family="Y",id="0x14199999"}'
    BEFORE = r'''
kova_item_last_success_timestamp_seconds{item="id=\"0x14140201\"",id="0x14140402"} 1700000000.5
kova_item_last_success_timestamp_seconds{item="PoE 1 voltage",id="0x14140201"} 1700000000
kova_item_read_successGONE 1
kova_item_last_success_timestamp_secondsGONE 1600000000
kova_item_last_success_timestamp_seconds{id="0x1"} NaN
kova_item_last_success_timestamp_seconds{id= 1
'''.replace("GONE", GONE)

    def setUp(self):
        super().setUp()
        self.place = self.folder / "collected"
        self.place.mkdir()
        self.file = self.place / "kova.prom"
        self.file.write_text(self.BEFORE)
        self.mode = 0o640
        self.file.chmod(self.mode)

    def test_is_replaced_whole_and_remembers_the_last_success(self):
        link = self.place / "link"
        link.symlink_to("kova.prom")
        result = self.export("metrics", "--output", str(link))
        self.assertIn('kovactl: 0x14199999 Y//a \\ "b",family="x" is missing: ', result.err)
        self.assertTrue(link.is_symlink())
        text = self.file.read_text()
        self.assertIn('id="0x14140402"} 1700000000.5\n', text)  # failed now
        self.assertNotIn('id="0x14140201"} 1700000000\n', text)  # read well now
        self.assertIn(f"kova_item_read_success{self.GONE} 0\n", text)
        self.assertIn(f"seconds{self.GONE} 1600000000\n", text)
        self.assertEqual(stat.S_IMODE(self.file.stat().st_mode), self.mode)
        self.assertEqual(sorted(os.listdir(self.place)), ["kova.prom", "link"])

    def test_what_the_file_knew_is_missed_if_it_is_selected(self):
        self.assertEqual(run(f"--simulate metrics --output {self.place}/all").exit_code, 0)
        known = (self.place / "all").read_text()
        no_ports = self.machine(codes={"0x00200000": 0})
        ports, port = item_count("PoE"), item_count("PoE", "PoE 1")
        for selection, exit_code, missed in (("", 1, ports), ("--family PoE", 1, ports),
                                             ("PoE/PoE?1/* --family PoE", 1, port),
                                             ("--family PIC", 0, 0)):
            with self.subTest(selection=selection):
                self.file.write_text(known)
                result = run([*no_ports, "metrics", *selection.split(), "--output",
                              str(self.file)])
                self.assertEqual(result.exit_code, exit_code)
                lost = re.findall(r'read_success{family="PoE".*} 0\n', self.file.read_text())
                self.assertEqual(len(lost), missed)
        self.assertEqual(run("--simulate metrics --output -").out[:2], "# ")
        self.check(((["metrics", "--output", ""], 2, "", "--output needs the name of a file"),))

    def test_failure_leaves_the_old_file_and_nothing_else(self):
        os.mkfifo(self.place / "pipe")
        for name, options, reason in (
            ("no/such", {}, "No such file or directory"),
            ("pipe", {}, "no plain file"),
            (".", {}, "no plain file"),
            ("kova.prom", full_disk(4), "File too large"),
        ):
            with self.subTest(name=name):
                result = self.export("metrics", "--output", str(self.place / name), **options)
                self.assert_one_line(result.err)
                self.assertIn(reason, result.err)
        self.assertEqual(run(["--module", "/none", "metrics", "--output", str(self.file)]).exit_code,
                         2)
        self.assertEqual(self.file.read_text(), self.BEFORE)
        self.assertEqual(sorted(os.listdir(self.place)), ["kova.prom", "pipe"])


    def test_without_a_device_the_file_says_so(self):
        nothing = self.folder / "nothing.json"
        nothing.write_text('{"codes": {}}')
        result = run(["--simulate", str(nothing), "metrics", "--output", str(self.file)])
        self.assertEqual(result.exit_code, 3)
        text = self.file.read_text()
        self.assertIn("kova_up 0\n", text)
        self.assertIn(f"kova_item_read_success{self.GONE} 0\n", text)
        self.assertIn(f"seconds{self.GONE} 1600000000\n", text)
        self.assertNotRegex(text, r"read_success{.*} 1")


class Senml(Export):
    def test_has_every_value_once_by_the_standards_rules(self):
        items = self.export("list", "--json").json["items"]
        base = "urn:dev:ow:10e2073a01080063:"
        pack = self.export("senml", "--base-name", base).json
        good = {re.sub("[^-A-Za-z0-9:./_]", "_", "/".join(map(item.get, ("family", "package", "name"))))
                for item in items if item["ok"] and item["value"] is not None}
        self.assertEqual(sorted(record["n"] for record in pack),
                         sorted(name for name in good if "Hardware_Monitor/" not in name))
        for record in pack:
            self.assertRegex(record["n"], r"\A[A-Za-z0-9][-A-Za-z0-9:./_]*\Z")
            self.assertEqual(len(record.keys() & {"v", "vs", "vb"}), 1)
            self.assertEqual(len(record.keys() & {"bn", "bt"}), 2 if record is pack[0] else 0)
        self.assertEqual(pack[0]["bn"], base)
        charge = next(record for record in pack if record.get("u") == "C")
        self.assertIsInstance(charge["v"], int)  # no 18720.000000000004

    def test_leaves_out_units_that_nobody_knows(self):
        record = run(f"--module {FAKE_MODULE} senml").json[0]
        self.assertEqual((record["n"], record["v"], record.get("u")), ("Fake/Package/X", -0.5, None))

    def test_takes_one_line_and_the_machines_own_name_if_wanted(self):
        result = self.export("senml", "--compact")
        self.assert_one_line(result.out)
        self.assertRegex(result.json[0]["bn"], r"\A[A-Za-z0-9][-A-Za-z0-9:./_]*:\Z")


if __name__ == "__main__":
    unittest.main()
