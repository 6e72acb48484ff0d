"""kovactl report: what the page in the file has to show."""
import json
import os
import re
import socket
import unittest

from items import BASE, item_count
from program import FAKE_MODULE, TestCase, run


class Reports(TestCase):
    def setUp(self):
        super().setUp()
        self.file = self.folder / "report.html"

    def report(self, *arguments):
        return run(["report", str(self.file), *arguments])

    def content(self):
        """The readings in the file, which has to be a page that needs nothing else."""
        text = self.file.read_text()
        self.assertEqual(re.findall(r'(?:src|href)="(?!data:|#|api/|metrics)[^"]*"', text), [])
        self.assertEqual(text.count("</script>"), text.count("<script "))
        return json.loads(re.search(r'<script type="application/json" id="report">(.*?)</script>',
                                    text, re.DOTALL)[1])

    def test_holds_every_sweep_and_each_failure(self):
        machine = self.machine(codes={"0x00B00009": {"fail_read": {"status": 110, "every": 3}}})
        result = self.report(*machine, "--for", "0.9s", "--interval", "0.1s")
        self.assertEqual((result.exit_code, result.out), (1, ""))
        self.assertIn(f"1 of {item_count()} items failed in at least one sweep", result.err)
        report = self.content()
        sweep = {"number": len(report["history"]["times"]), "time": report["history"]["times"][-1],
                 "age": 0, "duration": None, "interval": 0.1, "pace": 0.1, "up": True, "list": 1}
        self.assertEqual([report[key]["sweep"] for key in ("items", "history")], [sweep, sweep])
        self.assertLess(abs(report["made"] - sweep["time"]), 60)
        self.assertEqual(report["items"]["machine"], {"name": socket.gethostname(),
                                                      "simulated": "machine"})
        history = report["history"]
        sweeps = len(history["times"])
        self.assertGreaterEqual(sweeps, 3)
        self.assertEqual(history["times"], sorted(history["times"]))
        self.assertEqual({len(series) for series in history["series"].values()}, {sweeps})
        self.assertEqual(list(report["failures"]), ["0x14190700"])
        failure = report["failures"]["0x14190700"]
        self.assertEqual(failure["count"], history["series"]["0x14190700"].count(None))
        self.assertEqual(failure["failure"], "the device did not answer (0x6E)")
        self.assertIn(failure["last"], history["times"])
        self.assertEqual(len(report["items"]["items"]), len(run([*machine, "list", "--json"])
                                                            .json["items"]))

    def test_shows_a_recording_as_it_was_when_it_was_made(self):
        recording = self.folder / "customer.json"
        moments = [[0, "0x00820000", 3031, "0x00822003", 1000], [5000, "0x00820000", 3131],
                   [9999, "0x00822003", {"status": 5}]]
        recording.write_text(json.dumps({
            "note": "Recorded 2026-01-02 03:04:05 UTC with release 0.1.0", "base": BASE,
            "trace": {"moments": moments, "seconds": 10}}))
        # Read at each second, and at each moment: what comes at the very end is seen too.
        self.assertEqual(self.report("--from", str(recording)).exit_code, 1)
        report = self.content()
        times = report["history"]["times"]
        self.assertEqual([times[0], times[-1], len(times)], [1767323045, 1767323054.999, 11])
        series = report["history"]["series"]
        self.assertEqual(series["0x14170111"], [30] * 5 + [40] * 6)
        self.assertEqual(series["0x14170311"], [1000] * 10 + [None])
        self.assertEqual(report["items"]["machine"], {"name": "customer", "simulated": False})
        self.assertIn("with release 0.1.0", report["source"])
        self.assertEqual(list(report["failures"]), ["0x14170311"])

    def test_nothing_is_lost_of_a_recording_however_long_it_is(self):
        recording = self.folder / "long.json"
        for hours in (1, 3, 24):
            # A second of trouble each, between the steps of any clock: two failures, a fan that
            # leaves its range, and one that stands still.
            def second(at, code, word, then):
                return [[at, code, word], [at + 1000, code, then]]
            length = 3600 * hours
            third = 333 * length + 123
            moments = [[0, "0x822003", 3000, "0x822004", 3000, "0x822005", 3000, "0x822006", 3000,
                        "0x820000", 3000],
                       *second(third, "0x822003", {"status": 5}, 3000),
                       *second(third + 5000, "0x822004", 9000, 3000),
                       *second(2 * third, "0x822005", {"status": 6}, 3000),
                       *second(2 * third + 7000, "0x822006", 0, 3000)]
            # A machine that moves all the time is thinned out.
            moments += [[1000 * t, "0x820000", 3000 + t % 2] for t in range(1, length)]
            recording.write_text(json.dumps({"base": BASE, "trace": {
                "moments": sorted(moments, key=lambda m: m[0]), "seconds": length}}))
            with self.subTest(hours=hours):
                result = self.report("--from", str(recording), "--interval", "1s")
                self.assertEqual(result.exit_code, 1, result.err)
                self.assertIn(f"2 of {item_count()} items failed", result.err)
                report = self.content()
                self.assertEqual({id: told["count"] for id, told in report["failures"].items()},
                                 {"0x14170311": 2, "0x14170313": 2})
                self.assertEqual({id: (told["count"], told["message"].partition(":")[0])
                                  for id, told in report["judged"].items()},
                                 {"0x14170312": (2, "is outside its published range"),
                                  "0x14170314": (2, "stands still while others turn")})
                self.assertEqual(report["items"]["sweep"]["number"], length + 8)
                self.assertEqual("drawn in steps of" in report["source"], True)
                lines = report["history"]["series"]
                self.assertLess(len(lines["0x14170311"]), 3700)
                self.assertEqual([None in lines["0x14170311"], max(lines["0x14170312"])],
                                 [True, 9000])

    def test_ctrl_c_keeps_what_there_is(self):
        terminal = self.terminal("report", str(self.file), "--simulate", "--for", "1h")
        terminal.wait_for("sweep, Ctrl-C ends it 2/3601")
        terminal.press_control_c()
        self.assertEqual(terminal.finish(), 0)
        self.assertGreaterEqual(len(self.content()["history"]["times"]), 2)
        self.assertRegex(self.content()["source"], r"^\d+ sweeps. Ended early: interrupted$")

    def test_a_device_that_hangs_takes_no_sweep_along(self):
        arguments = ["report", str(self.file), "--module", FAKE_MODULE, "--for", "5m",
                     "--interval", "50ms"]
        hang = "0x14150711 GSensor/Settings/Measure mode did not answer"
        result = run([*arguments, "--timeout", "0.3"], FAKE_MODULE="hangs later")
        self.assertEqual((result.exit_code, result.err), (
            3, f"kovactl: {hang} within 0.3 s; {self.file} has the 2 sweeps until then\n"))
        self.assertEqual(len(self.content()["history"]["times"]), 2)
        self.assertIs(self.content()["items"]["machine"]["simulated"], False)
        self.assertEqual(self.content()["source"], f"2 sweeps. Ended early: {hang} within 0.3 s")
        self.file.unlink()
        terminal = self.terminal(*arguments, FAKE_MODULE="hangs later", size=(10, 200))
        terminal.wait_for("sweep, Ctrl-C ends it 2/")
        terminal.press_control_c()
        self.assertEqual(terminal.finish(), 1)
        self.assertIn(f"interrupted while {hang}; {self.file} has the 2 sweeps", terminal.screen)
        self.assertIn(f"interrupted while {hang}", self.content()["source"])
        self.file.unlink()
        result = run([*arguments, "--timeout", "0.3"], FAKE_MODULE="hangs")
        self.assertEqual((result.exit_code, self.file.exists()), (3, False))
        self.assertIn("; the first sweep was not whole, and nothing is written", result.err)

    def test_a_mistake_is_one_line_and_leaves_no_file(self):
        folder = str(self.folder / "none" / "report.html")
        for arguments, reason in (
                (["--simulate", "--for", "5x"], "'5x' is no length"),
                (["--simulate", "--interval", "1ms"], "'1ms' is no interval of 50ms"),
                (["--from", "slow-bus"], "is no recording"),
                (["--from", "nowhere.json"], "no machine description 'nowhere.json'"),
                (["--from", "x.json", "--for", "1m"], "--for"),
                (["--from", "x.json", "--simulate"], "--from names the machine")):
            with self.subTest(arguments):
                result = self.report(*arguments)
                self.assertEqual((result.exit_code, result.out), (2, ""))
                self.assert_one_line(result.err)
                self.assertIn(reason, result.err)
        self.assertEqual(run(["report", folder, "--simulate", "--for", "0"]).exit_code, 2)
        self.assertEqual(os.listdir(self.folder), [])


if __name__ == "__main__":
    unittest.main()
