"""`kovactl check`: states, the status line, performance data, and trouble as a state of its own."""
import json
import shlex
import unittest

from items import BASE
from program import TestCase, run

OK, WARNING, CRITICAL, UNKNOWN = range(4)


class Check(TestCase):
    def test_judges_values_by_limits_or_published_ranges(self):
        machine = self.machine(codes={"0x00820000": 3481, "0x00820001": 3831})
        vtin = "TRK-7000/Temperatures/TRK7K VTIN "
        cases = [
            ("", WARNING,
             f"WARNING - {vtin}2 is outside its published range: 110 Cel (0 .. 100) |"),
            ("--warn 'TRK7K VTIN 2=200'", OK, "OK - 3 items read |"),
            ("--warn 'TRK7K VTIN *=70'", WARNING,
             f"WARNING - {vtin}1 is beyond its limit: 75 Cel (limit 70), {vtin}2 is "
             "beyond its limit: 110 Cel (limit 70) |"),
            ("--warn 'TRK7K VTIN *=70' --crit 'trk7k vtin 2=~:85'", CRITICAL,
             f"CRITICAL - {vtin}2 is beyond its limit: 110 Cel (limit ~:85), {vtin}1 is "),
            ("--warn '*VTIN *=@60:80' --warn '*VTIN 1=0:76'", OK, "OK - 3 items read |"),
            ("--crit '*VTIN 3=50:'", CRITICAL, f"CRITICAL - {vtin}3 is beyond its limit: 37 Cel"),
        ]
        for options, state, line in cases:
            with self.subTest(options=options):
                result = run([*machine, "check", *shlex.split(options), "TRK7K VTIN ?"])
                self.assertEqual(result.exit_code, state, result.err)
                self.assertTrue(result.out.startswith("KOVA " + line), result.out)

    def test_gives_measured_values_to_draw_and_no_settings(self):
        result = run(["--simulate", "check", "--family", "PIC", "--warn", "Power input=11:",
                      "--crit", "Power input=9:"])
        self.assertEqual(result.exit_code, OK)
        data = result.out.partition(" | ")[2]
        self.assertRegex(data, r"'PIC/Real-time status/Power input'=12\.[0-9];11:;9:;0;24 ")
        self.assertIn("status/Ignition off timer'=", data)
        self.assertNotIn("Settings", data)

    def test_tells_of_what_fails_and_of_what_is_gone(self):
        before = self.folder / "before.json"
        before.write_text(run("--simulate list --json").out)
        machine = self.machine(codes={"0x00822005": {"fail_read": 5}, "0x00B00000": None})
        result = run([*machine, "check", "--expect", str(before)])
        self.assertEqual(result.exit_code, CRITICAL)
        self.assertIn("CRITICAL: TRK-7000/Onboard fan speeds/TRK7K OB fan 3 cannot be read: ", result.out)
        self.assertIn("CRITICAL: SMART BATTERY/SMART BATTERY/Voltage is gone: ", result.out)

    def test_is_not_ok_when_the_machine_is_not(self):
        battery, power = "SMART BATTERY/SMART BATTERY/", "PIC/Real-time status/Power input"
        fan, errors, low = {"0x00822003": 0}, {"0x00B00016": 0xC7}, {"0x00620005": 101}
        stopped = "TRK-7000/Onboard fan speeds/TRK7K OB fan 1 stands still while others turn: 0 RPM"
        for codes, options, state, lines in (
                ({**fan, **errors, **low}, "", CRITICAL,
                 [f"CRITICAL: {stopped}", f"WARNING: {battery}ErrorCodes is not 0: 0x7",
                  f"CRITICAL: {power} is below the low-battery threshold in force: 10.1 V "
                  "(cut-off 10.5)"]),
                (fan, "'TRK7K OB fan 1'", CRITICAL, [f"CRITICAL: {stopped}"]),
                (fan, "'TRK7K OB fan 2'", OK, []),
                (low, "'Power input'", CRITICAL, [f"CRITICAL: {power} is below the low"]),
                ({"0x00620004": 2, "0x00620005": 276}, "", OK, []),  # a 24 V vehicle that charges
                (errors, "--crit ErrorCodes=0", CRITICAL,
                 [f"CRITICAL: {battery}ErrorCodes is beyond its limit: 0x7 (limit 0)"]),
                ({}, "--crit 'Manufacturer Name=0'", UNKNOWN,
                 [f"UNKNOWN: {battery}Manufacturer Name has no number to hold against"])):
            with self.subTest(codes=codes, options=options):
                result = run([*self.machine(codes=codes), "check", *shlex.split(options)])
                self.assertEqual(result.exit_code, state, result.out)
                self.assertEqual(result.out.count("\n"), 1 + len(lines), result.out)
                for line in lines:
                    self.assertIn("\n" + line, result.out)

    def test_trouble_is_unknown(self):
        hanging = self.machine(codes={"0x00820000": {"value": 3000, "delay_us": 10000000}})
        # No call comes back within the time that check has without being told.
        stuck = ["--simulate", str(self.folder / "stuck.json")]
        (self.folder / "stuck.json").write_text(
            json.dumps({"base": BASE, "bus": {"delay_us": 10000000}}))
        # Every call comes back in good time, the whole does not.
        slow = ["--simulate", str(self.folder / "slow.json")]
        (self.folder / "slow.json").write_text(
            json.dumps({"base": BASE, "bus": {"delay_us": 20000}}))
        for arguments, reason in [
                (["--simulate", "check", "--crt", "5"], "no option '--crt': did you mean '--crit'?"),
                (["--bogus", "5", "check"], "no option '--bogus'"),
                (["--simulate", "check", "--warn", "X=1:0"], "X=1:0: not ITEM=RANGE"),
                (["--simulate", "check", "--crit", "X"], "X: not ITEM=RANGE"),
                (["--simulate", "check", "--expect", "/none"], "cannot read '/none'"),
                ([*hanging, "--timeout", "0.5", "check"],
                 "not done within 0.5 s: 0x14170111 TRK-7000/Temperatures/TRK7K VTIN 1 has not answered for 0."),
                ([*stuck, "check"], "not done within 10 s: "),
                ([*slow, "check", "--timeout", "1"], "not done within 1 s: 0x")]:
            with self.subTest(arguments=arguments):
                result = run(arguments)
                self.assertEqual(result.exit_code, UNKNOWN)
                self.assertTrue(result.out.startswith("KOVA UNKNOWN - " + reason), result.out)
                self.assertEqual(result.out.count("\n"), 1)


if __name__ == "__main__":
    unittest.main()
