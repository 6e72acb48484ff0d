"""Records agents and kovactl, and replays what was recorded."""
import datetime
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import time
import unittest

KOVACTL, RECORDER, SIMULATOR, THREADS_AGENT = (
    os.environ[name] for name in
    ("KOVACTL", "KOVA_RECORDER", "KOVA_SIMULATOR", "KOVA_THREADS_AGENT"))
MACHINES = pathlib.Path(os.environ["KOVA_MACHINES"])
AGENT = [sys.executable, "-B", str(pathlib.Path(__file__).with_name("agent.py"))]
STEP_MS = 700  # the machines' time from call to call, so that they move fast


def start(command, preload, **environment):
    # The interpreter keeps memory to its end, which is no leak of ours.
    leaks = {"ASAN_OPTIONS": "detect_leaks=0"} if command[0] == sys.executable else {}
    preload = ":".join(filter(None, (os.environ["KOVA_RUNTIMES"], preload)))
    return subprocess.Popen(command, env={**os.environ, **leaks, "LD_PRELOAD": preload,
                                          **environment},
                            stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)


def run(command, preload, **environment):
    """Gives exit code, stdout and stderr."""
    process = start(command, preload, **environment)
    out, err = process.communicate()
    return process.returncode, out, err


class TestCase(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="recorder.")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.file = self.folder / "recorded.json"

    def machine(self, base="default", **description):
        file = self.folder / "machine.json"
        file.write_text(json.dumps({"base": str(MACHINES / f"{base}.json"),
                                    "clock": {"step_ms": STEP_MS}, **description}))
        return {"KOVA_SIM_MACHINE": str(file)}

    def recording(self, machine, **more):
        return {**machine, "KOVA_RECORD_LIBRARY": SIMULATOR,
                "KOVA_RECORD_FILE": str(self.file), **more}

    def note(self, file=None):
        return json.loads((file or self.file).read_text())["note"]

    @staticmethod
    def until(condition):
        """Waits, on a busy machine for long: the test's own time limit ends it."""
        while not condition():
            time.sleep(0.05)


class Faithful(TestCase):
    def check(self, command, machine):
        """The same without the recorder, with it, and on the replay; but for times of day."""
        def outcome(preload, environment):
            code, out, err = run(command, preload, **environment)
            return code, re.sub(r'"bt": \d+', '"bt"', out), err
        plain = outcome(SIMULATOR, machine)
        self.assertGreater(len(plain[1].splitlines()), 50, plain)
        recorded = outcome(RECORDER, self.recording(machine, KOVA_RECORD_STEP_MS=str(STEP_MS)))
        self.assertEqual(recorded, plain)
        replayed = outcome(SIMULATOR, {"KOVA_SIM_MACHINE": str(self.file)})
        self.assertEqual(replayed, plain)

    def test_shipped_machines(self):
        names = sorted(file.stem for file in MACHINES.glob("*.json"))
        self.assertGreater(len(names), 3)
        for name in names:
            # Waiting shows nothing that the same machine without it does not.
            swift = {"bus": {"delay_us": 0},
                     "codes": {"0xA00000..0xA00FFF": {"delay_us": 0}}} if name == "slow-bus" else {}
            machine = self.machine(name, **swift)
            for arguments in (["capability"], ["list", "--json"]):
                with self.subTest(machine=name, arguments=arguments):
                    self.check([KOVACTL, *arguments], machine)
            with self.subTest(machine=name):
                self.check([*AGENT, "session", name, "4000"], machine)

    def test_a_bus_that_fails_now_and_then(self):
        flaky = self.machine(bus={"fail_read": {"status": 9, "every": 7, "stores": 3},
                                  "fail_write": {"status": 8, "every": 3}})
        for seed in "abc":
            self.check([*AGENT, "session", seed, "4000"], flaky)

    def test_an_hour_stays_small_and_shows_the_same_at_its_times(self):
        machine = self.machine(clock={"step_ms": 10})
        code, out, err = run([*AGENT, "hour"], RECORDER, **self.recording(machine))
        self.assertEqual((code, err), (0, "0\n"))
        self.assertLess(self.file.stat().st_size, 5_000_000)
        self.assertIn("for 1 h 0 min 0 s: 360000 reads (", self.note())
        self.assertLess(max(map(len, self.file.read_text().splitlines())), 1000)
        variation = self.folder / "replay.json"
        variation.write_text(json.dumps({"base": str(self.file), "clock": {"step_ms": 10}}))
        self.assertEqual(run([*AGENT, "hour"], SIMULATOR, KOVA_SIM_MACHINE=str(variation))[1], out)


class Lasting(TestCase):
    """What becomes of the file, however the agent ends."""
    def polling(self, **more):
        agent = start([*AGENT, "polls"], RECORDER, **self.recording(self.machine(), **more))
        self.addCleanup(agent.communicate)
        self.addCleanup(agent.kill)
        self.assertIn("polling (0, ", agent.stdout.readline())
        return agent

    def test_a_crash_loses_little_and_is_kept_by_the_next_recording(self):
        self.file.write_text("the one before")
        part = self.file.with_name("recorded.json.part")
        agent = self.polling()
        json.loads(part.read_text())  # whole from the start
        self.until(lambda: '"0x820000"' in part.read_text())
        second = run([*AGENT, "session", "1", "9"], RECORDER, **self.recording(self.machine()))
        self.assertIn("is being recorded by another process", second[2])
        self.assertEqual((second[2].count("\n"), len(second[1].splitlines())), (1, 9))
        agent.kill()
        agent.wait()
        self.assertIn("reads", self.note(part))
        self.assertEqual(self.file.read_text(), "the one before")
        crashed = part.read_text()
        run([*AGENT, "session", "1", "9"], RECORDER, **self.recording(self.machine()))
        self.assertEqual((self.folder / "recorded.json.crashed").read_text(), crashed)
        self.assertRegex(self.note(), r"for \d+ s: \d reads.*, \d writes?")

    def test_each_crash_is_kept(self):
        part = self.file.with_name("recorded.json.part")
        names = [f"recorded.json.crashed{'' if i == 1 else f'-{i}'}" for i in range(1, 10)]
        for name in [*names, None]:
            part.write_text(str(name))
            err = run([*AGENT, "session", "1", "9"], RECORDER, **self.recording(self.machine()))[2]
            if name:
                self.assertEqual((err, (self.folder / name).read_text()), ("", name))
        self.assertIn("are kept already; move them away", err)
        self.assertEqual(part.read_text(), "None")
        self.assertEqual([(self.folder / name).read_text() for name in names], names)

    def test_names_hold_what_the_percent_signs_say(self):
        host = re.escape(os.uname().nodename)
        for pattern, name in (("%h-%d.json", host + r"-20\d\d-[01]\d-[0-3]\d\.json"),
                              ("%t%%", r"[0-2]\d[0-5]\d[0-5]\d%"),
                              ("%p-%p", r"(\d+)-\1"), ("plain", "plain")):
            with self.subTest(pattern):
                out = run([*AGENT, "file"], RECORDER, **self.recording(
                    self.machine(), KOVA_RECORD_FILE=f"{self.folder}/{pattern}"))[1]
                self.assertRegex(out, rf"\A{re.escape(str(self.folder))}/{name}\n\Z")
                self.note(pathlib.Path(out[:-1]))

    def test_mode_and_links_stay(self):
        real = self.folder / "real.json"
        self.addCleanup(os.umask, os.umask(0o027))
        self.file.symlink_to("real.json")
        for mode in (0o640, 0o604, 0o660):  # by the umask, then what it was
            if real.exists():
                real.chmod(mode)
            run([*AGENT, "session", "1", "9"], RECORDER, **self.recording(self.machine()))
            self.assertTrue(self.file.is_symlink())
            self.assertEqual(real.stat().st_mode & 0o777, mode)
        self.polling()
        self.assertEqual((self.folder / "real.json.part").stat().st_mode & 0o777, 0o600)

    @unittest.skipUnless(os.geteuid() == 0, "makes files of another user's")
    def test_a_strangers_files_count_for_nothing_in_a_shared_folder(self):
        self.folder.chmod(0o1777)
        part, stop, target = (self.folder / name for name in
                              ("recorded.json.part", "recorded.json.stop", "target"))

        def plant(file, make):
            make()
            os.chown(file, 65534, 65534, follow_symlinks=False)

        for file, make, reason in (
            (part, part.touch, "recorded.json.part: is no file of this user's own"),
            (part, lambda: part.symlink_to(target), "cannot be written (ELOOP)"),
            (part, lambda: os.mkfifo(part), "recorded.json.part: is no file of this user's own"),
            (self.file, lambda: self.file.symlink_to(target), "is a link of another user's"),
        ):
            with self.subTest(reason):
                plant(file, make)
                settings = self.recording(self.machine())
                self.assertIn(reason, run([*AGENT, "session", "1", "9"], RECORDER, **settings)[2])
                self.assertFalse(target.exists())
            file.unlink()
        plant(self.file, lambda: (self.file.touch(), self.file.chmod(0o666)))
        self.polling()
        plant(stop, stop.touch)
        time.sleep(2.5)
        self.assertTrue(part.exists())
        os.chown(stop, 0, 0)
        self.until(lambda: not stop.exists() and not part.exists())
        self.assertEqual((self.file.stat().st_uid, self.file.stat().st_mode & 0o002), (0, 0))

    def test_a_file_beside_it_ends_the_recording(self):
        agent = self.polling()
        stop = self.folder / "recorded.json.stop"
        stop.touch()
        self.until(lambda: self.file.exists() and not stop.exists())
        self.assertIsNone(agent.poll())
        self.assertIn(" reads", self.note())

    def test_a_full_disk_ends_the_recording_and_nothing_else(self):
        machine = self.machine()
        plain = run([*AGENT, "full"], SIMULATOR, **machine)
        code, out, err = run([*AGENT, "full"], RECORDER, **self.recording(machine))
        self.assertEqual((code, out), (0, plain[1]))
        self.assertRegex(err, r"\AlibKOVADeviceRecorder: recording stopped: .*EFBIG.*\n\Z")
        self.assertIn("it stopped early", self.note())

    def test_a_slow_disk_gets_all_of_it_for_good(self):
        recorded = []
        for preload in (RECORDER, f"{os.environ['KOVA_SLOW_DISK']}:{RECORDER}"):
            err = run([*AGENT, "session", "7", "2000"], preload,
                      **self.recording(self.machine(), KOVA_RECORD_STEP_MS="5"))[2]
            recorded.append(json.loads(self.file.read_text())["trace"])
        self.assertEqual(recorded[0], recorded[1])
        # The new file in its folder, what is in it, and that it stands in the place of the old one.
        # What is in it is made to last every five seconds too, if this takes as long.
        self.assertRegex(err, r"\Afolder (file )+folder \Z")

    def test_a_disk_that_is_full_from_the_start_keeps_nothing(self):
        err = run([*AGENT, "no_room"], RECORDER, **self.recording(self.machine()))[2]
        self.assertIn("recorded.json: cannot be written (EFBIG)\n", err)
        self.assertEqual(os.listdir(self.folder), ["machine.json"])

    def test_threads(self):
        code, _, err = run([THREADS_AGENT], RECORDER, **self.recording(self.machine()))
        self.assertEqual((code, err), (0, ""))
        counts = re.findall(r"(\d+) (?:reads|writes)", self.note())
        self.assertEqual(sum(map(int, counts)), 2001)

    def test_children(self):
        relative = os.path.relpath(self.file)
        silent = run([*AGENT, "fork"], RECORDER,
                     **self.recording(self.machine(), KOVA_RECORD_FILE=relative))[2]
        self.assertNotIn("libKOVADeviceRecorder", silent)
        self.assertIn(" 3 reads, ", self.note())
        named = self.folder / "%p.json"
        _, out, _ = run([*AGENT, "fork"], RECORDER,
                        **self.recording(self.machine(), KOVA_RECORD_FILE=str(named)))
        for process, reads in zip(out.split(), (3, 5)):
            self.assertIn(f" {reads} reads, ", self.note(self.folder / f"{process}.json"))

    def test_a_fork_in_the_middle_of_a_call(self):
        slow = self.machine(bus={"delay_us": 500000})
        opening = {"KOVA_RECORD_LIBRARY": os.environ["KOVA_CALLING_LIBRARY"],
                   "KOVA_SLOW_START": "1"}
        for why, preload, settings in (
            ("the simulator's", SIMULATOR, slow),
            ("the recorder's", RECORDER, self.recording(slow)),
            ("the first, which opens the library", RECORDER, self.recording({}, **opening)),
            ("a child that records too", RECORDER,
             self.recording({}, KOVA_RECORD_FILE=f"{self.folder}/%p", **opening)),
        ):
            with self.subTest(why):
                self.assertEqual(run([*AGENT, "forks_meanwhile"], preload, **settings),
                                 (0, "0\n", ""))

    def test_the_line_on_stderr_does_no_harm(self):
        reading, broken = os.pipe()
        os.close(reading)
        self.addCleanup(os.close, broken)
        own_file = self.folder / "own"
        for preload, settings in (
            (SIMULATOR, {"KOVA_SIM_MACHINE": "/nonexistent"}),
            (RECORDER, self.recording(self.machine(), KOVA_RECORD_FILE="/nonexistent/r"))):
            preload = ":".join(filter(None, (os.environ["KOVA_RUNTIMES"], preload)))
            for command, stderr in (
                (["exec", *AGENT, "stderr"], broken),
                (["exec", *AGENT, "stderr", str(own_file)], subprocess.DEVNULL),
                (["exec", *AGENT, "stderr", str(own_file), "2>&-"], None),
            ):
                with self.subTest(preload=preload, command=command[-2:]):
                    done = subprocess.run(
                        ["sh", "-c", " ".join(command)], stderr=stderr, timeout=60, check=False,
                        env={**os.environ, "ASAN_OPTIONS": "detect_leaks=0", **settings,
                             "LD_PRELOAD": preload})
                    self.assertEqual(done.returncode, 0)
                    self.assertEqual(own_file.read_text() if own_file.exists() else "", "")

    def test_what_cannot_be_recorded_is_told_once(self):
        machine = self.machine()
        os.mkfifo(self.folder / "pipe")  # no device, which a fault here would replace for everybody
        (self.folder / "linked.part").symlink_to(self.folder / "elsewhere")
        plain = run([*AGENT, "session", "1", "20"], SIMULATOR, **machine)[1]
        for changes, reason in (
            ({"KOVA_RECORD_FILE": "/nonexistent/r.json"}, "/nonexistent/r.json: cannot be written"),
            ({"KOVA_RECORD_FILE": str(self.folder / "pipe")}, "no ordinary file"),
            ({"KOVA_RECORD_FILE": f"{self.folder}/%x"}, "after a percent sign comes d"),
            ({"KOVA_RECORD_REDACT": "0x1..x"}, "'0x1..x' is no device code"),
            ({"KOVA_RECORD_STEP_MS": "0"}, "expected 1 to 86400000"),
            ({"KOVA_RECORD_FILE": f"{self.folder}/r%"}, "after a percent sign comes d"),
            ({"KOVA_RECORD_FILE": str(self.folder / "linked")}, "cannot be written (ELOOP)"),
            ({"KOVA_RECORD_REDACT": "0x1,0x3..0x2"}, "'0x3..0x2' is no device code"),
            ({"KOVA_RECORD_STEP_MS": "86400001"}, "expected 1 to 86400000"),
            ({"KOVA_RECORD_STEP_MS": "7s"}, "expected 1 to 86400000"),
        ):
            with self.subTest(reason):
                code, out, err = run([*AGENT, "session", "1", "20"], RECORDER,
                                     **self.recording(machine, **changes))
                self.assertEqual((code, out, err.count("\n")), (0, plain, 1))
                self.assertIn(reason, err)
        missing = self.recording(machine, KOVA_RECORD_LIBRARY="/nonexistent.so")
        self.assertIn("/nonexistent.so: cannot open",
                      run([*AGENT, "session", "1", "9"], RECORDER, **missing)[2])

    def test_the_file_tells_what_was_recorded_and_how_long(self):
        for count, step in ((1, 86400000), (40, 1500)):
            before = datetime.datetime.now(datetime.timezone.utc).replace(microsecond=0)
            _, out, _ = run([*AGENT, "session", "5", str(count)], RECORDER,
                            **self.recording(self.machine(), KOVA_RECORD_STEP_MS=str(step)))
            counts = []
            for what in ("read", "write"):
                lines = [line for line in out.splitlines() if line.startswith(what)]
                failed = sum(line.split()[2 if what == "read" else 3] != "0" for line in lines)
                counts.append(f"{len(lines)} {what}{'' if len(lines) == 1 else 's'}"
                              + (f" ({failed} failed)" if failed else ""))
            told = re.fullmatch(r"Recorded (\S+ \S+) UTC with release [0-9.]+, for \d+ s: (.*)",
                                self.note())
            self.assertEqual(told[2], ", ".join(counts))
            begin = datetime.datetime.fromisoformat(told[1] + "+00:00")
            self.assertTrue(before <= begin <= datetime.datetime.now(datetime.timezone.utc))
            trace = json.loads(self.file.read_text())["trace"]
            self.assertEqual(trace["seconds"], count * step / 1000)

    def test_time_does_not_run_backwards(self):
        _, out, err = run([*AGENT, "backwards"], RECORDER, **self.recording(self.machine()))
        trace = json.loads(self.file.read_text())["trace"]
        code = "0x820000"
        words = {}  # of one moment or of several: it is written down every second
        for time_ms, *answers in trace["moments"]:
            self.assertEqual(answers[0], code)
            words.setdefault(time_ms, []).extend(answers[1:])
        self.assertEqual(words, {
            5000: [3141, 3142],  # the second at 1 s, by the agent
            9000: [3142, 3143, {"read": 4, "word": 3144}]})
        self.assertEqual((trace["seconds"], err), (90.5, ""))
        self.assertIn("for 1 min 30 s: 6 reads, 0 writes", self.note())

    def test_more_codes_than_a_description_has(self):
        for count, ending in ((65536, ""), (65537, "more than 65536 device codes")):
            _, out, err = run([*AGENT, "codes", str(count)], RECORDER,
                              **self.recording(self.machine()))
            self.assertGreater(int(out), 65000)
            self.assertIn(ending, err)
            self.assertEqual(err == "", ending == "")
            self.assertEqual("it stopped early" in self.note(), ending != "")

    def test_what_is_recorded_can_be_replayed(self):
        """Also at the end of what a description may take: 60001 codes and half a million answers."""
        err = run([*AGENT, "writes", "600000"], RECORDER, **self.recording(self.machine()))[2]
        self.assertIn("has as many answers as can be replayed\n", err)
        replay = {"KOVA_SIM_MACHINE": str(self.file)}
        self.assertEqual(run([*AGENT, "codes", "1"], SIMULATOR, **replay)[2], "")

    def test_an_agent_notices_nothing(self):
        machine = self.machine()
        expected = run([*AGENT, "careful"], SIMULATOR, **machine)[1]
        self.assertIn("\n0 0 77\n0xe0000004\n", expected)
        self.assertEqual(run([*AGENT, "careful"], RECORDER, **self.recording(machine))[1:],
                         (expected, ""))
        self.assertEqual(run([*AGENT, "careful"], RECORDER,  # and where nothing can be recorded
                             **self.recording(machine, KOVA_RECORD_FILE="/nonexistent/r"))[1],
                         expected)
        quiet = self.recording({}, KOVA_RECORD_FILE="/nonexistent/r",
                               KOVA_RECORD_LIBRARY=os.environ["KOVA_CALLING_LIBRARY"])
        self.assertEqual(run([*AGENT, "careful"], RECORDER, **quiet)[1],
                         "0 0 77\n0 0 77\n0xe0000004\n")

    def test_what_the_device_library_calls_itself_is_not_the_agents(self):
        library = os.environ["KOVA_CALLING_LIBRARY"]
        settings = self.recording({}, KOVA_RECORD_STEP_MS="5", KOVA_RECORD_LIBRARY=library)
        self.assertEqual(run([*AGENT, "codes", "2"], RECORDER, **settings), (0, "0\n", ""))
        self.assertEqual(json.loads(self.file.read_text())["trace"]["moments"],
                         [[0, "0x0", 10], [5, "0x1", 12]])

    def test_where_nothing_was_called_there_is_no_file(self):
        run([*AGENT, "silent"], RECORDER, **self.recording(self.machine()))
        self.assertEqual(os.listdir(self.folder), ["machine.json"])

    def test_blanked_words(self):
        run([KOVACTL, "list"], RECORDER,
            **self.recording(self.machine(), KOVA_RECORD_REDACT="0xB0001C,0xA00011..0xA00015"))
        self.assertIn(", private words blanked", self.note())
        recording = json.loads(self.file.read_text())
        self.assertEqual(recording["redacted"], ["0x00B0001C", "0x00A00011..0x00A00015"])
        moments = recording["trace"]["moments"]
        words = {moment[i]: moment[i + 1] for moment in moments
                 for i in range(1, len(moment), 2)}
        self.assertEqual([words[code] for code in ("0xb0001c", "0xa00011", "0xa00015")], [0] * 3)
        self.assertNotEqual(words["0xa00021"], 0)


if __name__ == "__main__":
    unittest.main()
