"""The commands of the built kovactl, with the plug-in, on simulated machines."""
import unittest

from program import VERSION, TestCase, run


class Lists(TestCase):
    def setUp(self):
        super().setUp()
        # One reading that fails, one outside its range, and two that stand still.
        self.worn = self.machine(codes={
            "0x00240001": {"fail_read": 5}, "0x00820000": 4231, "0x00240000": 412002,
            "0x00250000": 12100, "0x00250001": 48247})

    def test_tables_are_aligned_grouped_and_marked(self):
        result = run([*self.worn, "list", "--family", "poe"])
        self.assertEqual(result.exit_code, 1)
        self.assertEqual(result.err, "kovactl: cannot read 0x14140402 PoE 2 current: the device did "
                         "not answer (0x5)\nkovactl: 1 of 20 items could not be read\n")
        self.assertEqual(result.out.partition("\n\nPoE: PoE 3")[0], """\
  ID          NAME           VALUE        RANGE     ACCESS

PoE: PoE 1
  0x14140B01  PoE 1 power    1 (Enable)   0 .. 1    rw
  0x14140801  PoE 1 detect   4            0 .. 7    r
  0x14140901  PoE 1 class    4            0 .. 7    r
  0x14140401  PoE 1 current  412.002 mA   0 .. 600  r
  0x14140201  PoE 1 voltage  12.1 V       0 .. 100  r

PoE: PoE 2
  0x14140B02  PoE 2 power    1 (Enable)   0 .. 1    rw
  0x14140802  PoE 2 detect   4            0 .. 7    r
  0x14140902  PoE 2 class    2            0 .. 7    r
  0x14140402  PoE 2 current  unreadable: the device did not answer (0x5)
  0x14140202  PoE 2 voltage  48.247 V     0 .. 100  r""")
        board = run([*self.worn, "list", "--family", "trk-7000"]).out
        self.assertIn("150 Cel   0 .. 100   r  OUT OF RANGE\n", board)

    def test_json_has_every_element_of_the_document_with_its_status(self):
        listed = run([*self.worn, "list", "--json"])
        self.assertEqual(listed.exit_code, 1)
        items = listed.json["items"]
        document = run([*self.worn, "capability", "--compact"])
        self.assert_one_line(document.out)
        elements = [element["id"] for family in document.json.values()
                    for package in family.values() if isinstance(package, dict)
                    for element in package["e"]]
        self.assertEqual([int(item["id"], 16) for item in items], elements)
        for item in items:
            self.assertIsInstance(item["code"], int)
        failed = [(item["id"], item["code"], item["status"], item["value"])
                  for item in items if not item["ok"]]
        self.assertEqual(failed, [("0x14140402", 5, None, None)])  # the device's own code


class Commands(TestCase):
    def check(self, cases):
        """Runs cases of arguments, exit code, part of stdout and part of stderr, "" for empty."""
        for arguments, exit_code, out, err in cases:
            with self.subTest(arguments=arguments):
                result = run(arguments)
                self.assertEqual(result.exit_code, exit_code, result.err)
                self.assertIn(out, result.out)
                self.assertIn(err, result.err)
                if err:
                    self.assert_one_line(result.err)
                else:
                    self.assertEqual(result.err, "")

    def test_read_and_write_single_items(self):
        self.check((
            ("--simulate get 0x14160716", 0, "0x14160716 PIC/Settings/12V low battery voltage  10.5 V\n", ""),
            ("get 336987926 --simulate", 0, "10.5 V", ""),
            ("get --simulate 0x14150741", 0, "2 (-2~+2G)", ""),
            ("--simulate get 0x14150721 --value-only", 0, "0\n", ""),
            ("--simulate get 0x14160746 --value-only", 0, "9.5\n", ""),
            ("--simulate get 0x14200001", 1, "unreadable: the module has", "such item (0xFFFFFCFF)"),
            ("--simulate get 0x14140B01 0x14200001 0x14140B02", 1, "PoE 2 power  1 (Enable)", "0x14200001"),
            ("--simulate set 0x14140B01 off", 0, "PoE 1 power  0 (Disable)\n", ""),
            ("--simulate set 0x1416071B 24v", 0, "2 (24V)\n", ""),
            ("--simulate set 0x14150741 -16~+16G", 0, "16 (-16~+16G)", ""),
            ("--simulate set 0x14150722 -0.25", 0, "-0.25 G\n", ""),
            ("--simulate set 0x14150711 0 --json", 0, '"label": "standby"', ""),
            ("--simulate set 0x14160716 11", 0, "11 V\n", ""),
            ("--simulate set 0x14160716 9.55", 0, "9.5 V, after 9.55 was sent\n", ""),
            ("--simulate set 0x14160716 15", 1, "", "its range is 9.5 .. 11.5"),
            ("--simulate set 0x14160716 15 --json", 1, '"code": 4294966014', "0xFFFFFAFE"),
            ("--simulate set 0x14160801 1", 1, "",
             "it cannot be written (0xFFFFFCFF), it is read-only"),
            ("--simulate set 0x14160711 2.5", 2, "", "whole numbers"),
            ("--simulate set 0x1416071B 48V", 2, "", "0 (Auto), 1 (12V), 2 (24V)"),
        ))

    def test_usage_errors_take_one_line(self):
        self.check((
            ("", 2, "", "kovactl: A subcommand is required"),
            ("lists", 2, "", "kovactl"),
            ("--simulate get", 2, "", "ITEM or --family is required"),
            ("--simulate get 14140B01", 2, "", "was 0x14140B01 meant?"),
            ("--simulate list --family nosuch", 2, "", "only: SDRAM, SMART BATTERY"),
            ("--simulate list extra", 2, "", "no item 'extra'"),
            ("--simulate nosuch list", 2, "", "no machine description 'nosuch'"),
            ("--simulate list --module /nonexistent.so", 2, "", "cannot load the module"),
            ("--simulate watch --interval nan", 2, "", "'nan' is no interval"),
            ("--simulate watch --interval 0", 2, "", "'0' is no interval"),
            ("--simulate watch --count -1", 2, "", "'-1' is no number of samples"),
            ("--simulate senml --base-name a,b", 2, "", "base name"),
            ("list --simulate failing-reads --family PIC", 0, "IGN status", ""),  # shipped
            ("--version", 0, f"kovactl {VERSION}\n", ""),
        ))

    def test_errors_are_one_json_document_too(self):
        bad = self.folder / "bad.json"
        bad.write_text('{"codes": 1}')
        for arguments in ("--simulate get nosuch --json", "--simulate get --json --nosuch",
                          f"--simulate {bad} list --json"):
            with self.subTest(arguments=arguments):
                result = run(arguments)
                self.assertEqual(result.exit_code, 2)
                self.assert_one_line(result.err)
                self.assertIs(result.json["ok"], False)
                self.assertEqual(result.err, f"kovactl: {result.json['error']['message']}\n")
                self.assertEqual(result.json["error"]["exit_code"], 2)

    def test_every_help_text_has_an_example(self):
        for command in ("", "list", "capability", "get", "set", "watch", "metrics", "senml"):
            with self.subTest(command=command):
                result = run(f"{command} --help")
                self.assertEqual(result.exit_code, 0)
                self.assertIn("Example:\n  kovactl ", result.out)


if __name__ == "__main__":
    unittest.main()
