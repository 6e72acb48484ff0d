"""What is told of machines on which something is wrong."""
import json
import unittest

from items import LACKING, PRESENCE, item_count
from program import FAKE_MODULE, TestCase, preloading, run

NONSENSE = {
    "0x00820000": 0,  # 0 K
    "0x006B0000": 70000,  # a minimum above its maximum
    "0x00B00025": 0xFFFFFFFF,  # in the middle of a text
    "0x00822003": 9000,  # RPM, outside the range
    "0x00822004": 0,
    "0x00B00016": 0xC7,
    "0x00620005": 101,  # a threshold of 10.5 V
    "0x00822005": {"fail_read": 5},
}


class BuiltInMachine(TestCase):
    def test_answers_for_every_item(self):
        self.assertEqual(LACKING, {}, "simulator/machines/default.json lacks these codes")


class Doctor(TestCase):
    def test_healthy_machine(self):
        self.check((("--simulate doctor", 0, f"{item_count()} of {item_count()} items can be read\n",
                     ""), ("--simulate doctor", 0, "\n\nAll is well.\n", "")))

    def test_tells_what_fails_and_what_cannot_be_true(self):
        result = run([*self.machine(codes=NONSENSE), "doctor", "--json"])
        self.assertEqual((result.exit_code, result.json["exit_code"]), (1, 1))
        failed = {step["path"].rpartition("/")[2]: step for step in result.json["steps"]
                  if step["step"] == "item"}
        self.assertEqual({name: step["verdict"] for name, step in failed.items()},
                         dict.fromkeys(failed, "failed"))
        for name, rule, words in (
            ("TRK7K VTIN 1", "absolute-zero", "-272 Cel"),
            ("Ignition delay on timer", "out-of-range", "turned over: 70000 .."),
            ("Manufacturer Name", "unreadable", "not UTF-8"),
            ("TRK7K OB fan 1", "out-of-range", "9000 RPM (0 .. 8000)"),
            ("TRK7K OB fan 2", "fan-stopped", "others turn: 0 RPM; device code 0x822004 reads 0x0"),
            ("ErrorCodes", "battery-error", "0x7"), ("Power input", "input-below-cut-off", "10.1"),
            ("TRK7K OB fan 3", "unreadable",
             "did not answer (0xFFFFFAFF); device code 0x822005 answers 0x5"),
        ):
            self.assertEqual(failed[name]["rule"], rule)
            self.assertIn(words, failed.pop(name)["message"])
        self.assertEqual(failed, {})
        self.assertIn("missing from its document", " ".join(result.json["advice"]))

    def test_names_the_slowest_items(self):
        slow = {"value": 300, "delay_us": 20000}
        result = run([*self.machine(codes={"0x006A0005": slow, "0x006A0006": slow}), "doctor",
                      "--json"])
        times, = (step for step in result.json["steps"] if step["step"] == "times")
        self.assertEqual({item["path"].rpartition("/")[2] for item in times["slowest"][:2]},
                         {"Ignition off timer", "Hard off timer"})
        self.assertEqual(len(times["slowest"]), 3)
        self.assertGreaterEqual(times["seconds"], 0.04)
        self.assertIn("ms; slowest: 0x1416080", times["message"])

    def test_list_and_get_mark_what_needs_attention(self):
        machine = self.machine(codes=NONSENSE)
        listed = run([*machine, "list"]).out
        for row in (r"TRK7K VTIN 1 .* NO SENSOR\n", r"TRK7K OB fan 1 .* OUT OF RANGE\n",
                    r"TRK7K OB fan 2 .* STANDS STILL\n", r"Power input .* BELOW CUT-OFF\n"):
            self.assertRegex(listed, row)
        self.check((([*machine, "get", "TRK7K OB fan 2"], 0, "fan 2  0 RPM  STANDS STILL\n", ""),))
        truck = self.machine(codes={"0x00620004": 2, "0x00620005": 276})
        self.assertNotIn("OUT OF RANGE", run([*truck, "list"]).out)
        self.check((([*truck, "get", "Power input"], 0, "Power input  27.6 V\n", ""),))

    def test_rules_of_a_file(self):
        file = self.folder / "rules.json"
        machine = self.machine(codes={"0x00822003": 0, "0x00B0004F": 65})
        for rules, findings, refusal in (
                ({}, {"fan-stopped"}, ""),
                ({"rules": {"fan-stopped": "off", "battery-worn": {"limit": 0.7}},
                  "warn": {"Power input": "13:"}}, {"battery-worn", "limit"}, ""),
                ({"rules": {"fan-stoped": "off"}}, {}, "no rule 'fan-stoped': did you mean 'fan-st"),
                ({"rules": {"fan-stopped": {"limit": 1}}}, {}, "fan-stopped: this rule has no limi"),
                ({"rules": {"battery-worn": {"for": "x"}}}, {}, '"for" is a duration such as "5m"'),
                ({"rule": {}}, {}, "'rule' is none of rules, warn and crit"),
                ({"crit": {"Power input": "1:0"}}, {}, "Power input=1:0: not ITEM=RANGE"),
                ([], {}, "has no JSON object")):
            with self.subTest(rules=rules):
                file.write_text(json.dumps(rules))
                result = run([*machine, "list", "--json", "--rules", str(file)])
                self.assertIn(refusal, result.err)
                self.assertEqual(result.exit_code, 2 if refusal else 0)
                self.assertEqual({finding["rule"] for finding in result.json.get("findings", {})},
                                 set(findings))

    def test_a_text_that_is_read_in_part_is_not_good(self):
        half = self.machine(codes={"0x00B00025": {"fail_read": 5}, "0x00A00112": {"fail_read": 6}})
        told = "in part only, 'KovaKovargy': the device did not answer (0x5)"
        for command, exit_code in (("list", 1), ("check", 2), ("doctor", 1)):
            with self.subTest(command):
                result = run([*half, command])
                self.assertEqual(result.exit_code, exit_code)
                self.assertIn(told, result.out)
                self.assertIn("device did not answer (0x6)", result.out)
        self.assertIn("0xB00024 reads 0x4B6F7661, 0xB00025 answers 0x5", result.out)
        items = run([*half, "list", "--json", "--family", "SMART BATTERY"]).json["items"]
        self.assertEqual([(item["value"], item["code"]) for item in items if "in_part" in item],
                         [(None, 5)])

    def test_names_the_cause_when_there_is_no_device(self):
        dead = self.folder / "dead.json"
        dead.write_text(json.dumps({"bus": {"fail_read": 9}}))
        absent = self.folder / "absent.json"
        absent.write_text(json.dumps({"codes": {code: 0 for family, code in PRESENCE.items()
                                                if family != "SMART BATTERY"}}))
        for options, cause, verdict in (
            (f"--simulate {dead}", "fails every presence read: SDRAM 0x9, SMART BATTERY 0x9, ",
             "failed  family   PoE is not present (code 0x200000 cannot be read (0x9))"),
            (f"--simulate {absent}", "has no device family present (reads that failed: SMART BA",
             "note    family   PoE is not present (code 0x200000 reads 0)"),
            ("", "neither /usr/lib/libKOVADevice.so nor /usr/lib64/libKOVADevice.so is there",
             "failed  library  /usr/lib64/libKOVADevice.so is not there"),
        ):
            with self.subTest(cause=cause):
                listed = run(options + " list")
                self.assertEqual(listed.exit_code, 3)
                self.assert_one_line(listed.err)
                self.assertIn(cause, listed.err)
                result = run(options + " doctor")
                self.assertEqual(result.exit_code, 3)
                self.assertIn(verdict, result.out)
        self.check((("doctor --module /none.so", 3, "failed  module   cannot load the module", ""),
                    (f"doctor --module {FAKE_MODULE}", 1, "failed  library", "")))

    def test_a_library_without_one_of_its_entry_points(self):
        for variable, verdicts, exit_code in (
            ("KOVACTL_READ_ONLY", ("ok      entries  KovaDeviceGetValue is there",
                                   "failed  entries  KovaDeviceSetValue is missing",
                                   "What to do: settings cannot be written"), 1),
            ("KOVACTL_WRITE_ONLY", ("failed  entries  KovaDeviceGetValue is missing",
                                    "ok      entries  KovaDeviceSetValue is there",
                                    "What to do: install the device library that belongs"), 3),
        ):
            with self.subTest(variable):
                result = run("doctor", **preloading(variable))
                self.assertEqual(result.exit_code, exit_code, result.out)
                for verdict in verdicts:
                    self.assertIn(verdict, result.out)


class Expected(TestCase):
    """Items that a machine should have, or had once."""
    def test_one_garbled_count_makes_no_modules(self):
        whole = len(run("--simulate list --json").json["items"])
        for read in range(2, 9):
            garbled = self.machine(clock={"step_ms": 0}, codes={"0x00A00000": {"trace": [
                [0, 2, {"word": 0xFFFFFFFF, "read": read}, {"word": 2, "read": read + 1}]]}})
            with self.subTest(read=read):
                listed = run([*garbled, "list", "--json"])
                self.assertEqual((listed.exit_code, len(listed.json["items"])), (0, whole))
        # What stands is believed.
        dead = self.machine(codes={"0x00A00000": 3})
        self.assertEqual(len(run([*dead, "list", "--json"]).json["items"]), whole + 14)

    def test_dead_sensor_does_not_vanish(self):
        dead = self.machine(codes={"0x00822005": {"fail_read": 5}, "0x00600000": {"fail_read": 5}})
        listed = run([*dead, "list", "--json"])
        self.assertEqual(listed.exit_code, 1)
        self.assertIs(listed.json["ok"], False)
        fans = [item for item in listed.json["items"] if item["id"] == "0x14170313"]
        self.assertEqual(fans[0], {
            "id": "0x14170313", "name": "TRK7K OB fan 3", "family": "TRK-7000",
            "package": "Onboard fan speeds", "path": "TRK-7000/Onboard fan speeds/TRK7K OB fan 3",
            "access": "r", "role": "reading", "kind": "integer", "min": 0, "max": 8000,
            "value": None, "unit": "RPM", "failure": "the device did not answer (0xFFFFFAFF)",
            "ok": False, "status": "IOT_STATUS_READ_FAILED", "code": 0xFFFFFAFF})
        self.assertEqual([fan["family"] for fan in fans], ["TRK-7000", "Hardware Monitor"])
        healthy = run("--simulate list --json").json["items"]
        self.assertEqual([item["id"] for item in listed.json["items"]],
                         [item["id"] for item in healthy])

    def test_what_a_file_knew_is_missed(self):
        file = self.folder / "list.json"
        file.write_text(run("--simulate sixteen-modules list --json").out)
        result = run(f"--simulate list --expect {file} --json")
        self.assertEqual(result.exit_code, 1)
        missing = [item for item in result.json["items"] if item.get("missing")]
        self.assertEqual(len(missing), 14 * item_count("SDRAM", "SDRAM0") + 4 * item_count("PoE", "PoE 1"))
        self.assertIn("0x14140B05 PoE/PoE 5/PoE 5 power is missing: ", result.err)
        file.write_text(run("--simulate list --json").out)
        no_ports = self.machine(codes={"0x00200000": 0})
        self.check((
            ([*no_ports, "list", "PoE 1 detect", "--expect", str(file)], 1,
             "PoE 1 detect  missing: its device is not there (0xFFFFF0FF)", "PoE 1 detect is miss"),
            ([*no_ports, "list", "--family", "PIC", "--expect", str(file)], 0, "IGN status", ""),
            (f"--simulate list --expect {file}", 0, "IGN status", ""),
            ("--simulate list --expect /nonexistent", 2, "", "cannot read '/nonexistent': No such"),
            (f"--simulate list --expect {__file__}", 2, "", "is no output of kovactl list --json"),
        ))


if __name__ == "__main__":
    unittest.main()
