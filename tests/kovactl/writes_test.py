"""`kovactl set` and `kovactl reset`."""
import unittest

from program import TestCase, run

FORGETS = "a simulated machine forgets"


class Writes(TestCase):
    def check_words(self, cases):
        self.check((["--simulate", *words], *rest) for words, *rest in cases)

    def test_values_as_people_write_them(self):
        self.check_words((
            (["set", "0x14140B01", "off"], 0, "PoE 1 power  0 (Disable), was 1 (Enable)\n", FORGETS),
            (["set", "poe 1 power=false"], 0, "PoE 1 power  0 (Disable)", FORGETS),
            (["set", "0x1416071B", "24v"], 0, "2 (24V), was 0 (Auto)", FORGETS),
            (["set", "0x14150741", "-16~+16G"], 0, "16 (-16~+16G)", FORGETS),
            (["set", "0x14150722", "-0.25"], 0, "-0.25 G, was 0 G\n", FORGETS),
            (["set", "Offset Y=0.2 G"], 0, "0.2 G, was 0 G\n", FORGETS),
            (["set", "Ignition delay on timer", "2min"], 0, "120 sec(s), was 10 sec(s)", FORGETS),
            (["set", "0x14160716", "10500 mV"], 0, "10.5 V\n", FORGETS),
            # What the device holds is the nearest to what was asked for, also where a product of
            # binary fractions falls below it.
            (["set", "0x14150722", "0.0003"], 0, "0.0003 G, was", FORGETS),
            (["set", "0x14160716", "9.55"], 0, "9.6 V, the nearest to 9.55 that it can", FORGETS),
            (["set", "0x14160716", "9.55V"], 0, "9.6 V, the nearest to 9.55V that it can", FORGETS),
            (["set", "0x14160716", "15"], 1, "", "refused the value (0xFFFFFAFE), its range is 9.5"),
            (["set", "0x14160711", "2.5"], 2, "", "whole numbers"),
            (["set", "0x14160716", "10 A"], 2, "", "its unit is V"),
            (["set", "0x1416071B", "48V"], 2, "", "0 (Auto), 1 (12V), 2 (24V)"),
            (["set", "0x1416071B", "24"], 2, "", "was 24V meant?"),
            (["set", "0x14150741", "on"], 2, "", "is needed"),
            (["set", "0x14160716", "10,5V"], 2, "", "numbers have a point, as in 10.5V"),
        ))

    def test_wrong_targets_are_refused_before_anything_is_written(self):
        self.check_words((
            (["set", "0x14160801=1", "0x14140B01=0"], 2, "", "IGN status is read-only"),
            (["set", "0x14140B01=0", "0x14140B02=x"], 2, "", "'x' is no value for PoE/PoE 2/PoE 2 power"),
            (["set", "0x14140B01=0", "0x14140B02"], 2, "", "'0x14140B02' is no ITEM=VALUE"),
            # Which the simulated device would take, in a place that is no item's.
            (["set", "0x14160799=1"], 2, "", "lists no item 0x14160799; --unlisted"),
            (["set", "0x14160721", "10"], 2, "", "change PIC/Settings/Ignition delay on timer"),
            (["set", "poe ? power", "0"], 2, "", "4 items, one is needed: PoE/PoE 1/PoE 1 power (0x14140B01)"),
            (["reset", "PoE 1 power"], 2, "", "has no factory default"),
            (["reset"], 2, "", "ITEM or --family is required"),
        ))

    def test_an_unlisted_id_is_written_to_if_that_is_said(self):
        result = run("--simulate set 0x14160799=1 --unlisted")
        self.assertEqual((result.exit_code, result.out), (1, ""))  # it cannot be read back
        self.assertIn("1 was sent to 0x14160799", result.err)

    def test_each_outcome_is_told(self):
        result = run("--simulate set 0x14160716=15 0x14140B01=0 --json")
        self.assertEqual((result.exit_code, result.json["ok"]), (1, False))
        self.assertEqual(result.json["items"], [
            {"id": "0x14160716", "path": "PIC/Settings/12V low battery voltage", "previous": 10.5,
             "sent": 15, "value": 10.5, "unit": "V", "in_range": True, "ok": False,
             "failure": "the device refused the value (0xFFFFFAFE)",
             "status": "IOT_STATUS_WRITE_FAILED", "code": 0xFFFFFAFE},
            {"id": "0x14140B01", "path": "PoE/PoE 1/PoE 1 power", "previous": 1, "sent": 0,
             "value": 0, "label": "Disable", "in_range": True, "ok": True,
             "status": "IOT_STATUS_SUCCESS", "code": 0}])

    def test_dry_run_writes_nothing(self):
        words = ["--simulate", "set", "PoE 1 power=off", "--dry-run"]
        self.check(((words, 0, "would be set to 0 (Disable), is 1 (Enable)\n", ""),
                    ([*words[:2], "0x14160716=5", "--dry-run"], 0, "; its range is 9.5 .. 11.5\n",
                     "")))
        document = run([*words, "--json"]).json
        self.assertEqual((document["dry_run"], document["items"][0]["value"]), (True, 1))

    def test_reset_writes_the_factory_defaults_back(self):
        result = run(["--simulate", "reset", "PIC/Settings/*", "--json"])
        self.assertEqual(result.exit_code, 0)
        defaults = run(["--simulate", "get", "PIC/Default settings/*", "--json"]).json["items"]
        self.assertEqual([item["value"] for item in result.json["items"]],
                         [item["value"] for item in defaults])
        self.check_words(((["reset", "24V low battery voltage"], 0, "21.8 V, was 22 V", FORGETS),
                          (["reset", "*", "--dry-run"], 0, "PIC/Settings/Power off retry times  would",
                           "left as they are: PoE 1 power, ")))

    def test_a_write_that_nobody_can_read_back_is_not_called_one(self):
        machine = self.machine(codes={"0x00690000": {"fail_read": 5}})
        result = run([*machine, "set", "0x14160711=10", "0x14140B01=0", "--json"])
        self.assertEqual((result.exit_code, result.json["ok"]), (1, False))
        unknown, written = result.json["items"]
        self.assertEqual((unknown["ok"], unknown["code"], written["ok"]), (False, 0, True))
        self.assertIn("cannot be read back: ", unknown["failure"])
        self.assertIn("10 sec(s) was sent to 0x14160711", result.err)

    def test_reset_without_a_readable_default_writes_nothing(self):
        machine = self.machine(codes={"0x006D0006": {"fail_read": 5}})
        result = run([*machine, "reset", "PIC/Settings/*", "--json"])
        self.assertEqual((result.exit_code, result.json["error"]["exit_code"]), (1, 1))
        self.assertIn("24V low battery voltage cannot be read: ", result.err)
        self.assertIn("; nothing was written", result.err)


if __name__ == "__main__":
    unittest.main()
