"""What becomes of commands and of the exporter when the device library misbehaves: each deed of
hostile_library.cpp against each command. It stands in the simulator's place, in a tree of its own.
"""
import json
import os
import pathlib
import shutil
import signal
import subprocess
import time
import unittest
import urllib.request
import uuid

from program import PROGRAM, TestCase

EXPORTER = os.environ["KOVA_EXPORTER"]
BUILD = pathlib.Path(PROGRAM).parents[2]
CODE, ITEM = "0x00820000", "0x14170111"  # of the first temperature
OTHER = "0x14170112"  # which nothing happens to
LEFT_OUT = "left out: the device library "
# What it does at a read, and what is said of it.
DEEDS = {
    "crash": LEFT_OUT + "crashed (signal 11)",
    "exit": LEFT_OUT + "ended the process (exit code 0)",
    "close": "the device library closed the connection",
    "babble": "the device's process sent what is no answer",
    "hang": "did not answer within 0.7 s",
    "slow": "did not answer within 0.7 s",
    "leak": "", "fork": "", "change": "",
}
FATAL = ("hang", "slow")


class Hostile(TestCase):
    def setUp(self):
        super().setUp()
        self.token = f"HOSTILE_TOKEN={uuid.uuid4()}"
        links = {"simulator/libKOVADeviceSim.so": os.environ["KOVACTL_HOSTILE"],
                 "module/libKovaIoT.so": BUILD / "module/libKovaIoT.so",
                 "recorder/libKOVADeviceRecorder.so": BUILD / "recorder/libKOVADeviceRecorder.so",
                 "tools/host/libKOVADeviceGuard.so": BUILD / "tools/host/libKOVADeviceGuard.so"}
        for place, target in links.items():
            (self.folder / place).parent.mkdir(parents=True, exist_ok=True)
            (self.folder / place).symlink_to(target)
        for program in (PROGRAM, EXPORTER):  # which look around themselves
            place = self.folder / "tools" / pathlib.Path(program).name
            place.mkdir(parents=True)
            shutil.copy(program, place)
        self.addCleanup(self.end_all)

    def environment(self, deed, at=CODE, once=False):
        name, _, value = self.token.partition("=")
        return {**os.environ, name: value, "HOSTILE": deed, "HOSTILE_AT": at,
                **({"HOSTILE_FILE": str(self.folder / "done")} if once else {})}

    def run_command(self, words, *deed, **options):
        start = time.monotonic()
        done = subprocess.run([self.folder / "tools/kovactl/kovactl", "--simulate", *words],
                              env=self.environment(*deed, **options), capture_output=True,
                              text=True, check=False, timeout=60)
        self.assertLess(time.monotonic() - start, 20)
        self.assert_nothing_runs()
        return done

    def assert_nothing_runs(self):
        for _ in range(100):  # a process that is killed takes its time on a busy machine
            if not self.processes():
                return
            time.sleep(0.05)
        self.fail(f"left behind: {self.processes()}")

    def processes(self):
        """What still runs of all that a test has started."""
        found = []
        for entry in pathlib.Path("/proc").glob("[0-9]*/environ"):
            try:
                if self.token.encode() in entry.read_bytes():
                    found.append(int(entry.parent.name))
            except OSError:
                pass  # gone, or somebody else's
        return found

    def end_all(self):
        for process in self.processes():
            os.kill(process, signal.SIGKILL)

    def test_each_deed_at_each_command(self):
        metrics, report, record = (self.folder / name for name in ("m.prom", "r.html", "r.json"))
        for command in (["list"], ["get", ITEM, OTHER], ["check"], ["doctor"], ["senml"],
                        ["metrics", "--output", str(metrics)], ["watch", "--count", "1"],
                        ["report", str(report), "--for", "0"], ["record", str(record)]):
            for deed, words in DEEDS.items():
                with self.subTest(command=command[0], deed=deed):
                    limit = ["--timeout", "0.7"] if deed in FATAL else []
                    done = self.run_command([*command, *limit], deed)
                    output = done.stdout + done.stderr
                    if words:
                        self.assertNotEqual(done.returncode, 0, output)
                    if deed in FATAL and command[0] not in ("check", "doctor"):
                        self.assertEqual(done.returncode, 3, output)
                    if command[0] in ("list", "get", "senml"):
                        self.assertIn(words, output)
                    if not os.environ["KOVACTL_RUNTIMES"]:  # a sanitizer keeps its stderr
                        self.assertNotIn("a line on std", output)

    def test_what_others_answer_is_shown_all_the_same(self):
        for deed in ("crash", "exit"):
            done = self.run_command(["get", ITEM, OTHER, "--json"], deed)
            first, second = json.loads(done.stdout)["items"]
            self.assertEqual((done.returncode, first["ok"], second["value"]), (1, False, 37))

    def test_a_constructor_that_misbehaves_ends_the_command(self):
        for deed, words in (("crash", "crashed (signal 11)"), ("exit", "(exit code 0)"),
                            ("hang", "did not answer within 0.7 s")):
            with self.subTest(deed):
                done = self.run_command(["list", "--timeout", "0.7"], deed, "load")
                self.assertEqual(done.returncode, 3)
                self.assertIn(words, done.stderr)
                self.assert_one_line(done.stderr)

    def test_a_set_that_dies_tells_what_was_written(self):
        done = self.run_command(["set", "0x14150711=1", "0x14150731=10", "--unlisted"],
                                "crash", "write")
        self.assertEqual(done.returncode, 3)
        self.assertIn("nobody knows whether it was written: 0x14150711; not tried: 0x14150731\n",
                      done.stderr)

    def test_the_exporter_goes_on(self):
        for deed in ("crash", "exit"):
            with self.subTest(deed), subprocess.Popen(
                    [self.folder / "tools/kova-exporter/kova-exporter", "--simulate",
                     "--interval", "100ms", "--web.listen-address", "127.0.0.1:0"],
                    env=self.environment(deed), stderr=subprocess.PIPE, text=True) as program:
                self.addCleanup(program.kill)
                url = program.stderr.readline().split()[-1]
                for _ in range(100):
                    with urllib.request.urlopen(url + "/api/v1/items", timeout=10) as answer:
                        items = json.load(answer)["items"]
                    if items:
                        break
                    time.sleep(0.1)
                rows = {row["id"]: row for row in items}
                self.assertIn(LEFT_OUT, rows[ITEM]["failure"])
                self.assertEqual(rows[OTHER]["value"], 37)
                start = time.monotonic()
                program.terminate()
                self.assertEqual(program.wait(10), 0)
                self.assertLess(time.monotonic() - start, 4)
                log = program.stderr.read()
                self.assertEqual(log.count(" is left out: "), 1, log)
            self.assert_nothing_runs()

    def test_nothing_is_left_of_a_program_that_is_killed(self):
        for moment in range(12):
            program = subprocess.Popen(
                [self.folder / "tools/kovactl/kovactl", "--simulate", "watch", "--interval", "0.05"],
                env=self.environment(""), stdout=subprocess.DEVNULL)
            time.sleep(moment * 0.004)
            program.kill()
            program.wait()
            self.assert_nothing_runs()


if __name__ == "__main__":
    unittest.main()
