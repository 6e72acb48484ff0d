"""`kovactl check`: states, the status line, performance data, and trouble as a state of its own."""
import shlex
import unittest

from program import TestCase, run

OK, WARNING, CRITICAL, UNKNOWN = range(4)


class Check(TestCase):
    def test_judges_values_by_limits_or_published_ranges(self):
        machine = self.machine(codes={"0x00820000": 3481, "0x00820001": 3831})
        cases = [
            ("", WARNING, "KOVA WARNING - TRK7K VTIN 2 110 Cel (range 0 .. 100) |"),
            ("--warn 'TRK7K VTIN 2=200'", OK, "KOVA OK - 3 items read |"),
            ("--warn 'TRK7K VTIN *=70'", WARNING,
             "KOVA WARNING - TRK7K VTIN 1 75 Cel (limit 70), TRK7K VTIN 2 110 Cel (limit 70) |"),
            ("--warn 'TRK7K VTIN *=70' --crit 'trk7k vtin 2=~:85'", CRITICAL,
             "KOVA CRITICAL - TRK7K VTIN 2 110 Cel (limit ~:85), TRK7K VTIN 1 75 Cel (limit 70) |"),
            ("--warn '*VTIN *=@60:80' --warn '*VTIN 1=0:76'", OK, "KOVA OK - 3 items read |"),
            ("--crit '*VTIN 3=50:'", CRITICAL, "KOVA CRITICAL - TRK7K VTIN 3 37 Cel (limit 50:)"),
        ]
        for options, state, line in cases:
            with self.subTest(options=options):
                result = run([*machine, "check", *shlex.split(options), "TRK7K VTIN ?"])
                self.assertEqual(result.exit_code, state, result.err)
                self.assertTrue(result.out.startswith(line), result.out)

    def test_gives_measured_values_to_draw_and_no_settings(self):
        result = run(["--simulate", "check", "--family", "PIC", "--warn", "Power input=11:",
                      "--crit", "Power input=9:"])
        self.assertEqual(result.exit_code, OK)
        data = result.out.partition(" | ")[2]
        self.assertRegex(data, r"'Power input'=12\.[0-9];11:;9:;0;24 ")
        self.assertIn("'Ignition off timer'=", data)
        self.assertNotIn("Settings", data)

    def test_tells_of_what_fails_and_of_what_is_gone(self):
        before = self.folder / "before.json"
        before.write_text(run("--simulate list --json").out)
        machine = self.machine(codes={"0x00822005": {"fail_read": 5}, "0x00B00000": None})
        result = run([*machine, "check", "--expect", str(before)])
        self.assertEqual(result.exit_code, CRITICAL)
        self.assertIn("CRITICAL: TRK7K OB fan 3 unreadable: ", result.out)
        self.assertIn("CRITICAL: SMART BATTERY/SMART BATTERY/Voltage missing: ", result.out)

    def test_trouble_is_unknown(self):
        hanging = self.machine(codes={"0x00820000": {"value": 3000, "delay_us": 10000000}})
        # Every call comes back in good time, the whole does not.
        slow = ["--simulate", str(self.folder / "slow.json")]
        (self.folder / "slow.json").write_text('{"base": "builtin", "bus": {"delay_us": 20000}}')
        for arguments, reason in [
                (["--simulate", "check", "--crt", "5"], "no option '--crt': did you mean '--crit'?"),
                (["--bogus", "5", "check"], "no option '--bogus'"),
                (["--simulate", "check", "--warn", "X=1:0"], "X=1:0: not ITEM=RANGE"),
                (["--simulate", "check", "--crit", "X"], "X: not ITEM=RANGE"),
                (["--simulate", "check", "--expect", "/none"], "cannot read '/none'"),
                ([*hanging, "--timeout", "0.5", "check"],
                 "not done within 0.5 s: 0x14170111 TRK7K VTIN 1 has not answered for 0."),
                ([*hanging, "check"], "not done within 10 s: 0x14170111 TRK7K VTIN 1 has not"),
                ([*slow, "check", "--timeout", "1"], "not done within 1 s: 0x")]:
            with self.subTest(arguments=arguments):
                result = run(arguments)
                self.assertEqual(result.exit_code, UNKNOWN)
                self.assertTrue(result.out.startswith("KOVA UNKNOWN - " + reason), result.out)
                self.assertEqual(result.out.count("\n"), 1)


if __name__ == "__main__":
    unittest.main()
