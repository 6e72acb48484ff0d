"""The commands of the built kovactl, with the plug-in, on simulated machines."""
import csv
import io
import pathlib
import re
import unittest

from items import item_count
from program import VERSION, TestCase, run


class Lists(TestCase):
    def setUp(self):
        super().setUp()
        # One reading that fails, one outside its range; nothing moves.
        self.worn = self.machine(clock={"step_ms": 0}, codes={
            "0x00240001": {"fail_read": 5}, "0x00820000": 4231, "0x00240000": 412002,
            "0x00250000": 12100, "0x00250001": 48247})

    def test_tables_are_aligned_grouped_and_marked(self):
        result = run([*self.worn, "list", "--family", "poe"])
        self.assertEqual(result.exit_code, 1)
        self.assertEqual(result.err, "kovactl: cannot read 0x14140402 PoE/PoE 2/PoE 2 current: the device did "
                         f"not answer (0x5)\nkovactl: 1 of {item_count('PoE')} items could not be "
                         "read\n")
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

    def test_csv_has_what_json_has(self):
        machine = [*self.worn, "list"]
        items = run([*machine, "--json"]).json["items"]
        listed = run([*machine, "--csv"])
        self.assertEqual(listed.exit_code, 1)
        rows = list(csv.DictReader(io.StringIO(listed.out, newline=""), strict=True))
        self.assertEqual([row["id"] for row in rows], [item["id"] for item in items])
        fields = set(rows[0])
        self.assertEqual({key for item in items for key in item} - fields, {"options"})
        for row, item in zip(rows, items):
            self.assertEqual(row["path"], item["path"])
            self.assertEqual(row["ok"], str(item["ok"]).lower())
            if isinstance(item["value"], float):
                self.assertEqual(float(row["value"]), item["value"], row)
        self.assertIn("out-of-range", {row["findings"] for row in rows})
        self.assertTrue(run([*machine, "--csv", "--fields", "unit,id", "--sort", "unit"]).out.startswith(
            "unit,id\r\n"))
        ordered = run([*machine, "--json", "--sort", "path"]).json["items"]
        self.assertEqual(ordered, sorted(items, key=lambda item: item["path"].encode()))

    def test_layouts_that_do_not_go_together_are_refused(self):
        self.check((
            ("list --fields id", 2, "", "--fields goes with --csv"),
            ("list --sort id", 2, "", "--sort goes with --csv or --json"),
            ("list --csv --fields id,pth", 2, "", "no field 'pth': did you mean 'path'?"),
            ("list --csv --sort pth", 2, "", "no field 'pth': did you mean 'path'?"),
        ))


class Commands(TestCase):
    def test_read_and_write_single_items(self):
        self.check((
            ("--simulate get 0x14160716", 0, "0x14160716 PIC/Settings/12V low battery voltage  10.5 V\n", ""),
            ("get 336987926 --simulate", 0, "10.5 V", ""),
            ("get --simulate 0x14150741", 0, "2 (-2~+2G)", ""),
            ("--simulate get 0x14150721 --value-only", 0, "0\n", ""),
            ("--simulate get 0x14160746 --value-only", 0, "9.5\n", ""),
            ("--simulate get 0x14200001", 1, "unreadable: the module has", "such item (0xFFFFFCFF)"),
            ("--simulate get 0x14140B01 0x14200001 0x14140B02", 1, "PoE 2 power  1 (Enable)", "0x14200001"),
        ))

    def test_items_go_by_name_pattern_and_path(self):
        self.check((
            (["--simulate", "get", "poe 1 POWER"], 0, "0x14140B01 PoE/PoE 1/PoE 1 power  1 (Enable)\n", ""),
            (["--simulate", "get", "trk7k ob fan ?"], 0, "0x14170317 TRK-7000/Onboard fan speeds/TRK7K OB fan 7  ", ""),
            (["--simulate", "get", "Temperature"], 0, "0x14191100 SMART BATTERY/SMART BATTERY/T", ""),
            (["--simulate", "get", "*/SDRAM1/temp*"], 0, "0x14180902 SDRAM/SDRAM1/Temperature", ""),
            (["get", "--simulate", "Low battery detection timer", "--value-only"], 0, "60\n", ""),
            (["get", "--simulate", "--family", "sdram", "--family", "trk-7000", "--family", "SDRAM",
              "*fan?1"], 0, "0x14170311 TRK-7000/Onboard fan speeds/TRK7K OB fan 1  ", ""),
            (["get", "--simulate", "*", "--family", "gsensor"], 0, "0x14150741 GSensor/Settings/G-range                2 (-2~", ""),
            ("--simulate list poe?1?power", 0, "0x14140B01  PoE 1 power", ""),
            ("--simulate senml --compact 0x14150741", 0, "GSensor/Settings/G-range", ""),
            (["--simulate", "get", "PoE 1 pwoer"], 2, "", "did you mean 'PoE 1 power'?"),
            (["--simulate", "get", "PoE 5 power"], 2, "", "is an item of PoE, and this machine has"),
            ("--simulate get 14140B01", 2, "", "was 0x14140B01 meant?"),
            ("--simulate get 14160716", 2, "", "was 0x14160716 meant?"),
            ("--simulate list --family poee", 2, "", "no family 'poee': did you mean 'PoE'?"),
        ))

    def test_json_records_are_complete(self):
        still = self.machine(codes={"0x00690005": 105})
        brief = {"id": "0x14160716", "name": "12V low battery voltage", "value": 10.5, "unit": "V",
                 "in_range": True, "ok": True, "status": "IOT_STATUS_SUCCESS", "code": 0}
        full = {**brief, "family": "PIC", "package": "Settings",
                "path": "PIC/Settings/12V low battery voltage", "access": "rw", "role": "setting",
                "kind": "real", "min": 9.5, "max": 11.5}
        options = [{"value": value, "label": label}
                   for value, label in enumerate(("Auto", "12V", "24V"))]
        got = run([*still, "get", "0x14160716", "0x1416071B", "0x14200001", "--json"]).json
        self.assertEqual(got["items"][0], full)
        self.assertEqual((got["items"][1]["options"], got["items"][1]["label"]), (options, "Auto"))
        self.assertEqual(got["items"][2], {
            "id": "0x14200001", "value": None, "ok": False, "status": "IOT_STATUS_UNSUPPORTED",
            "failure": "the module has no such item (0xFFFFFCFF)", "code": 0xFFFFFCFF})
        sample = run([*still, "watch", "0x14160716", "--json", "--count", "1"]).json
        self.assertEqual(sample["items"], [brief])

    def test_usage_errors_take_one_line(self):
        self.check((
            ("", 2, "", "kovactl: a command is needed: list, "),
            ("lst", 2, "", "no command 'lst': did you mean 'list'?"),
            # What only looks like the command: a file, and the value of an option.
            ("diff check now", 2, "", "cannot read 'check'"),
            ("dif check now", 2, "", "no command 'dif': did you mean 'diff'?"),
            ("--module check --timeout 5 lst", 2, "", "no command 'lst'"),
            ("--simulate list --famly PoE", 2, "", "no option '--famly': did you mean '--family'?"),
            ("help", 0, "senml", ""),
            ("help", 0, "--module PATH ", ""),
            ("help", 0, "--simulate [MACHINE] ", ""),
            ("help", 0, "--timeout TIME ", ""),
            ("help get", 0, "--value-only", ""),
            ("lst --help", 2, "", "no command 'lst': did you mean 'list'?"),
            ("check --help", 0, "Exit codes: 0 OK, 1 WARNING, 2 CRITICAL, 3 UNKNOWN.", ""),
            ("help gte", 2, "", "no command 'gte': did you mean 'get'?"),
            ("-V", 0, f"libKovaIoT.so, release {VERSION}\n", ""),
            ("--simulate get", 2, "", "ITEM or --family is required"),
            ("--simulate list --family nosuch", 2, "", "only: SDRAM, SMART BATTERY"),
            ("--simulate list extra", 2, "", "no item 'extra'"),
            ("--simulate list pic", 2, "", "no item 'pic': 'PIC/*' names all of its items"),
            ("--simulate get sdram0", 2, "", "'SDRAM/SDRAM0/*' names all of its items"),
            ("--simulate get PIC/settings", 2, "", "'PIC/Settings/*' names all of its items"),
            ("--simulate watch --interval 1,5s", 2, "", "numbers have a point"),
            ("--simulate nosuch list", 2, "", "no machine description 'nosuch'"),
            ("--simulate list --module /nonexistent.so", 2, "", "cannot load the module"),
            ("--simulate watch --interval nan", 2, "", "'nan' is no interval"),
            ("--simulate watch --interval 0", 2, "", "'0' is no interval"),
            ("--simulate get 0x14160716 --timeout 0", 0, "10.5 V", ""),  # no limit
            ("--simulate get 0x14160716 --timeout 0.05", 2, "", "'0.05' is no time limit"),
            ("--simulate watch --count -1", 2, "", "'-1' is no number of samples"),
            ("--simulate senml --base-name a,b", 2, "", "base name"),
            (["get", "--simulate", "failing-reads", "IGN status"], 0, "OFF", ""),  # shipped
            ("--version", 0, f"kovactl {VERSION}\nmodule ", ""),
            ("--module /etc/passwd --version", 0, f"kovactl {VERSION}\nmodule /etc/passwd\n", ""),
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

    def test_every_command_is_completed_and_has_an_example(self):
        def complete(*words):
            return run(["complete", "--", *words]).out.splitlines()

        commands = complete("=")
        help_text = run("--help").out.partition("Subcommands:\n")[2].partition("\n\n")[0]
        self.assertEqual(commands, re.findall(r"^  ([a-z-]+) ", help_text, re.M))
        self.assertIn("list", commands)
        self.assertNotIn("complete", commands, "it is not for people")
        for command in commands:
            with self.subTest(command=command):
                result = run(f"{command} --help")
                self.assertEqual(result.exit_code, 0)
                self.assertIn("Example:\n  kovactl ", result.out)

    def test_completion_asks_no_device(self):
        for words, completed in (
            (("=l",), "list"), (("=--VER",), "--version"), (("=CAP", "--timeout", "3"), "capability"),
            (("=slow", "--simulate"), "slow-bus"), (("=", "list", "--family"), "SMART BATTERY"),
            (("=sm", "list", "--family"), "SMART BATTERY"),
            (("=poe 2 c", "get", "--value-only"), "PoE 2 current"),
            (("=0x14140b0", "watch"), "0x14140B08"),
            (("=pic/settings/ba", "get"), "PIC/Settings/Battery type setting"),
            (("=Battery type setting=2", "set"), "Battery type setting=24V"),
            (("=a", "--simulate", "default", "set", "0x1416071B"), "Auto"),
        ):
            with self.subTest(words=words):
                result = run(["complete", "--", *words])
                self.assertEqual((result.exit_code, result.err), (0, ""))
                self.assertIn(completed, result.out.splitlines())
        for words, completed in (
            (("=", "metrics", "--output"), ["@files"]), (("=", "doctor"), []), (("=--si",), ["--simulate"]),
            (("=f", "--simulate"), ["failing-reads", "@files"]), (("=p", "list", "--family"), ["PIC", "PoE"]),
            (("=e", "set", "PoE 1 power"), ["Enable"]), (("=", "set", "IGN status"), []),
            (("=", "diff"), ["@files", "now"]), (("=", "diff", "--at=5m", "a.json"), ["@files", "now"]),
            (("=", "diff", "a", "b"), []), (("=", "record"), ["@files"]), (("=", "report"), ["@files"]),
            (("=", "report", "a.html"), []), (("=", "report", "--from"), ["@files"]),
            (("=", "list", "--expect"), ["@files"]), (("=", "check", "--rules"), ["@files"]),
            (("=poe 1 p", "record", "m.json"), ["PoE 1 power"]), (("=poe 1 p", "check", "--warn"), ["PoE 1 power"]),
            (("=--output=f", "metrics"), ["@files"]), (("=--family=p", "list"), ["--family=PIC", "--family=PoE"]),
            (("=id,pa", "list", "--fields"), ["id,path", "id,package"]), (("=va", "list", "--sort"), ["value"]),
            (("=d", "diff", "--simulate"), ["default", "@files"]), (("=", "list", "--timeout"), []),
            (("=re",), ["reset", "record", "report"]), (("=--j", "doctor"), ["--json"]),
        ):
            self.assertEqual(run(["complete", "--", *words]).out.splitlines(), completed, words)


class Streams(TestCase):
    def test_minus_is_stdin_or_stdout(self):
        machine = self.machine(clock={"step_ms": 0})
        listing = run([*machine, "list", "--json"]).out
        less = listing.replace("0x14160716", "0x1416FFFF")
        recording = (self.folder / "machine.json").read_text()
        for words, stdin, exit_code, out, err in (
                ("diff - now", listing, 0, "items the same\n", ""),
                ("diff now -", less, 1, "vanished", ""),
                ("list --expect -", less, 1, "0x1416FFFF", "kovactl: 0x1416FFFF "),
                ("check --rules -", '{"crit": {"Power input": "1"}}', 2, "KOVA CRITICAL", ""),
                ("report - --for 0", "", 0, "</html>", ""),
                ("diff - -", listing, 2, "", "cannot read '-': stdin can be read once only"),
                ("diff - now", recording, 2, "", "a recording is read more than once"),
                ("diff - now", "", 2, "", "stdin has no output of list --json"),
                ("check --rules - --expect -", listing, 3, "KOVA UNKNOWN", "stdin can be read once only"),
                ("record -", "", 2, "", "cannot go to stdout: name a file"),
                ("report page.html --from -", recording, 2, "", "needs a file, not stdin")):
            with self.subTest(words=words, stdin=stdin[:20]):
                options = [] if "--from" in words else machine
                result = run([*options, *words.split()], {"input": stdin.encode(), "timeout": 60})
                self.assertEqual(result.exit_code, exit_code, result.err)
                for part, whole in ((out, result.out), (err, result.err)):
                    self.assertIn(part, whole)
                    self.assertEqual(part == "", whole == "", whole)
        self.assertEqual([file.name for file in self.folder.iterdir()], ["machine.json"])


if __name__ == "__main__":
    unittest.main()
