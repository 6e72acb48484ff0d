"""kovactl record and kovactl diff: what is recorded, replayed and told apart."""
import json
import os
import pathlib
import re
import unittest

from items import BASE, codes_of, item_count
from program import TestCase, full_disk, preloading, run

DATA = pathlib.Path(__file__).parents[1] / "data"


class Records(TestCase):
    def setUp(self):
        super().setUp()
        self.file = self.folder / "recorded.json"

    def record(self, arguments, machine=("--simulate",)):
        return run([*machine, "record", str(self.file), *arguments.split()])

    def note(self):
        return json.loads(self.file.read_text())["note"]

    def test_a_replay_lists_what_the_machine_does(self):
        machine = self.machine(clock={"step_ms": 5}, codes={"0x00820001": {"fail_read": 5}})
        result = self.record("", machine)
        self.assertEqual((result.exit_code, result.err), (0, ""))
        self.assertEqual(result.out, f"{self.file}: 1 sample of {item_count()} items; 1 of them "
                                     "could not be read, which is recorded too\n")
        for command in ("list --json", "senml --base-name x"):
            live, replay = (run([*source, *command.split()])
                            for source in (machine, ("--simulate", str(self.file))))
            times = re.compile(r'"(bt|t)": [-0-9.e]+')
            self.assertEqual((times.sub("", replay.out), replay.err, replay.exit_code),
                             (times.sub("", live.out), live.err, 1))

    def test_failures_of_all_samples_count(self):
        self.record("")  # a second a call: the second of six samples follows these
        first = 1000 * int(re.search(r"(\d+) reads", self.note())[1])
        machine = self.machine(clock={"step_ms": 1000}, codes={"0x00820000": {
            "trace": [[0, 3000], [first, {"status": 5}], [first + 300000, 3000]]}})
        result = self.record("--interval 50ms --count 6", machine)
        self.assertIn("; 1 of them could not be read in at least one sample, which", result.out)

    def test_samples_move_as_they_did(self):
        machine = self.machine(codes={"0x00822003": {"ramp": {
            "from": 1000, "to": 9000, "per_second": 1000}}})
        result = self.record("0x14170311 --interval 0.3 --count 4", machine)
        self.assertRegex(result.out, r"4 samples of 1 items over \d+ s\n")
        moments = json.loads(self.file.read_text())["trace"]
        times = sorted({moment[0] for moment in moments["moments"]})
        times.append(1000 * moments["seconds"])
        for time, least in zip(times, (0, 300, 600, 900, 1200), strict=True):
            self.assertGreaterEqual(time, least)  # on a busy machine it is later
        recorded = [word for moment in moments["moments"]
                    for code, word in zip(moment, moment[1:]) if code == "0x822003"]
        watched = run(f"--simulate {self.file} watch 0x14170311 --interval 0.3 --count 4 --json")
        shown = [json.loads(line)["items"][0]["value"] for line in watched.out.splitlines()]
        self.assertLessEqual(set(shown), set(recorded[-4:]))
        self.assertGreater(len(set(shown)), 1)
        terminal = self.terminal("--simulate", "record", str(self.file), "--interval", "0.8",
                                 "--count", "2")
        terminal.wait_for("recording, Ctrl-C ends it 1/2")
        terminal.press_control_c()
        self.assertEqual(terminal.finish(), 0)

    def test_a_sample_asks_for_what_can_have_changed(self):
        for machine, calls_an_item in (("default", 1.5), ("sixteen-modules", 1.1)):
            items = run(["--simulate", machine, "list", "--json"]).json["items"]
            most = calls_an_item * len({item["id"] for item in items})
            reads = []
            for count in (1, 6):
                self.record(f"--interval 50ms --count {count}", ("--simulate", machine))
                reads.append(int(re.search(r"(\d+) reads", self.note())[1]))
            with self.subTest(machine, calls=(reads[1] - reads[0]) / 5):
                self.assertLessEqual(reads[1] - reads[0], 5 * most)

    def test_control_c_ends_it_well(self):
        self.file.write_text("the one before")
        terminal = self.terminal("--simulate", "record", str(self.file), "--interval", "0.2")
        terminal.wait_for("recording, Ctrl-C ends it")
        self.assertEqual(self.file.read_text(), "the one before")
        terminal.press_control_c()
        self.assertEqual(terminal.finish(), 0)
        self.assertRegex(terminal.screen, rf"recorded\.json: \d+ samples of {item_count()} items")
        self.assertIn(" reads, 0 writes", self.note())
        self.assertEqual(os.listdir(self.folder), ["recorded.json"])

    def test_redacted_ones_hold_no_serial_or_part_number(self):
        self.record("--redact")
        self.assertIn("private words blanked", self.note())
        names = ("Serial Number", "Part Number", "Specific Data")
        listed = run(f"--simulate {self.file} list --json").json["items"]
        values = {item["value"] for item in listed if item["name"] in names}
        self.assertEqual(values, {None})
        blanks = [item["name"] for item in listed if "redacted" in item]
        # Whether a module is write-protected stands by its part number's first word.
        self.assertEqual(set(blanks), {*names, "Write Protection"})
        self.assertIn(" redacted ", run(f"--simulate {self.file} list").out)
        result = run(f"--simulate default diff now {self.file}")
        self.assertEqual((result.exit_code, result.out.count("\n")), (0, 1), result.out)
        self.assertIn(f"; {len(blanks)} redacted ones left out", result.out)

    def test_what_goes_wrong_leaves_the_file_alone(self):
        self.file.write_text("the one before")
        for machine, arguments, exit_code, reason in (
            ((), "", 3, "no device found: neither /usr/lib/"),
            (("--simulate", "nosuch"), "", 2, "no machine description 'nosuch'"),
            (("--simulate",), "nosuch", 2, "no item 'nosuch'"),
            (("--simulate",), "--interval 1x", 2, "'1x' is no interval of 50ms or more"),
            (("--simulate",), "--for 0", 2, "'0' is no length"),
            (("--simulate",), "--count 0", 2, "'0' is no number of samples"),
            (("--simulate",), "--count 1 --for 1s", 2, "excludes"),
        ):
            with self.subTest(reason):
                result = self.record(arguments, machine)
                self.assertEqual((result.exit_code, result.out), (exit_code, ""))
                self.assertIn(reason, result.err)
                self.assert_one_line(result.err)
                self.assertEqual(self.file.read_text(), "the one before")
        self.assertEqual(os.listdir(self.folder), ["recorded.json"])
        result = run("--simulate record /nonexistent/r.json")
        self.assertEqual((result.exit_code, result.err),
                         (2, "kovactl: /nonexistent/r.json: cannot be written (ENOENT)\n"))

    def test_a_full_disk_is_told_once(self):
        self.file.write_text("the one before")
        result = run(["--simulate", "record", str(self.file)], full_disk(2048))
        self.assertEqual((result.exit_code, result.out, result.err), (
            1, "", f"kovactl: recording stopped: {self.file}: cannot be written (EFBIG)\n"))
        self.assertEqual(self.file.read_text(), "the one before")
        self.assertEqual(os.listdir(self.folder), ["recorded.json"])

    def test_a_preloaded_library_does_not_answer_in_anothers_place(self):
        for command, reason in (("record", "cannot record: "),
                                ("--simulate record", "cannot record: "),
                                ("--simulate list", "cannot simulate: ")):
            with self.subTest(command):
                result = run([*command.split(), str(self.file)], **preloading("KOVACTL_READ_ONLY"))
                self.assertEqual((result.exit_code, result.out), (2, ""))
                self.assertIn(f"{reason}{os.environ['KOVACTL_READ_ONLY']} is preloaded", result.err)
                self.assert_one_line(result.err)
                self.assertFalse(self.file.exists())

    def test_a_machine_on_which_nothing_is_found_is_recorded_too(self):
        nothing = self.folder / "nothing.json"
        nothing.write_text('{"bus": {"fail_read": 110}}')
        result = self.record("", ("--simulate", str(nothing)))
        self.assertEqual(result.exit_code, 3)
        self.assertIn("recorded.json has what was answered", result.err)
        self.assertIn('"0x200000",{"status":110}', self.file.read_text())

    def test_a_device_that_hangs_takes_no_answer_along(self):
        hanging = self.machine(codes={"0x00820000": {"value": 3000, "delay_us": 10000000}})
        result = self.record("--timeout 0.3", hanging)
        self.assertEqual((result.exit_code, result.err), (
            3, "kovactl: 0x14170111 TRK-7000/Temperatures/TRK7K VTIN 1 did not answer within 0.3 s; "
               f"{self.file} has what was answered\n"))
        self.assertIn(" reads, 0 writes", self.note())


class Differs(TestCase):
    def variation(self, name, **description):
        file = self.folder / name
        file.write_text(json.dumps({"base": BASE, "clock": {"step_ms": 0}, **description}))
        return str(file)

    def diff(self, before, after, options=""):
        return run(["diff", before, after, *options.split()])

    def test_tells_what_counts(self):
        good = self.variation("good.json")
        worn = self.variation("worn.json", codes={
            "0x00690006": 230, "0x00820001": {"fail_read": 5}, "0x00822003": 70000,
            "0x006C0000": 60, "0x00822004": 3000, "0x00A00000": 1, "0x00400000": 0, "0x00B00013": 30})
        result = self.diff(good, worn)
        self.assertEqual((result.exit_code, result.err), (1, ""))
        module, gsensor = item_count("SDRAM", "SDRAM1"), item_count("GSensor")
        both = item_count() - module - gsensor
        self.assertEqual(re.sub(" {2,}", "  ", result.out), f"""\
changed  SMART BATTERY/SMART BATTERY/Average Time To Full  N/A -> 0 h 30 m
range crossed  TRK-7000/Onboard fan speeds/TRK7K OB fan 1  3161 RPM -> 70000 RPM
fails now  TRK-7000/Temperatures/TRK7K VTIN 2  47 Cel -> unreadable: the device did not answer (0xFFFFFAFF)
range changed  PIC/Default settings/Ignition delay on timer  7 .. 3600 -> 7 .. 60
range changed  PIC/Settings/Ignition delay on timer  7 .. 3600 -> 7 .. 60
changed  PIC/Settings/24V low battery voltage  22 V -> 23 V
vanished  SDRAM/SDRAM1  all {module} items
vanished  GSensor  all {gsensor} items
{both - 7} of {both} items the same; 1 measured values moved (--all shows them)
""")
        back = self.diff(worn, good, "--all")
        self.assertIn("reads again ", back.out)
        self.assertRegex(back.out, f"new +GSensor +all {gsensor} items")
        self.assertRegex(back.out, "changed +TRK-7000/Onboard fan speeds/TRK7K OB fan 2 ")
        blank = self.variation("blank.json", codes={"0x00B00024..0x00B00028": 0x20202020})
        self.assertRegex(self.diff(good, blank).out, "Manufacturer Name +Kova Energy -> -\n")
        same = self.diff(good, good)
        self.assertEqual((same.exit_code, same.out), (0, f"{item_count()} of {item_count()} items the same\n"))

    def test_listings_recordings_and_now_are_the_same_machine(self):
        good = self.variation("good.json")
        listing = self.folder / "listing.json"
        listing.write_text(run(["--simulate", good, "list", "--json"]).out)
        recording = self.folder / "recording.json"
        run(["--simulate", good, "record", str(recording)])
        for before, after in ((str(listing), good), (good, str(recording)),
                              (str(recording), "now")):
            result = run(["--simulate", good, "diff", before, after, "--all", "--json"])
            self.assertEqual((result.exit_code, result.json), (
                0, {"ok": True, "same": True, "compared": item_count(), "moving": 0,
                    "changes": [], "later": []}))

    def test_what_fails_later_is_told(self):
        def recording(name, *moments):
            return self.variation(name, trace={"moments": [[0, "0x822003", 3000], *moments],
                                               "seconds": 120})
        good = recording("good.json")
        worse = recording("worse.json", [60500, "0x822003", {"status": 5}],
                          [61000, "0x822003", 3000])
        told = (f"later in {worse}: TRK-7000/Onboard fan speeds/TRK7K OB fan 1 fails at 60.5s: "
                r"the device did not answer \(0xFFFFFAFF\)\n")
        for before, after, exit_code, times in ((good, worse, 1, 1), (worse, good, 1, 1),
                                                (worse, worse, 0, 2), (good, good, 0, 0)):
            result = self.diff(before, after)
            self.assertEqual((result.exit_code, len(re.findall(told, result.out))),
                             (exit_code, times), result.out)
        later = self.diff(good, worse, "--json").json["later"]
        self.assertEqual([(entry["in"], entry["id"], entry["at"]) for entry in later],
                         [("after", "0x14170311", 60.5)])
        at = self.diff(good, worse, "--at 60.6s")
        self.assertEqual((at.exit_code, at.out.splitlines()[0].split()[:2]), (1, ["fails", "now"]))
        self.assertEqual(self.diff(good, worse, "--at 1m30s").exit_code, 0)
        for wrong, reason in (("2h", "has nothing at 2 h"), ("x", "'x' is no time")):
            result = self.diff(good, worse, f"--at {wrong}")
            self.assertEqual(result.exit_code, 2)
            self.assertIn(reason, result.err)

    def test_json_has_both_sides(self):
        worn = self.variation("worn.json", codes={"0x00820001": {"fail_read": 5}})
        changes = self.diff(self.variation("good.json"), worn, "--json").json["changes"]
        self.assertEqual(len(changes), 1)
        self.assertEqual({key: changes[0][key] for key in ("change", "id", "path")}, {
            "change": "fails_now", "id": "0x14170112",
            "path": "TRK-7000/Temperatures/TRK7K VTIN 2"})
        self.assertEqual([changes[0][key]["ok"] for key in ("before", "after")], [True, False])

    def test_trouble(self):
        good = self.variation("good.json")
        for content, reason in (("{", "bad.json:1:1: "), ('{"codes": 5}', "bad.json:1: codes: "),
                                ('{"items": [5]}', "is no output of kovactl list --json"),
                                (None, "cannot read '")):
            with self.subTest(reason):
                bad = self.folder / "bad.json"
                bad.unlink(missing_ok=True)
                if content:
                    bad.write_text(content)
                result = self.diff(good, str(bad))
                self.assertEqual((result.exit_code, result.out), (2, ""))
                self.assertIn(reason, result.err)
                self.assert_one_line(result.err)
        self.assertEqual(self.diff(good, "now").exit_code, 2)

    def test_only_regular_files_are_read(self):
        pipe = self.folder / "pipe"
        os.mkfifo(pipe)
        link = self.folder / "link"
        link.symlink_to(pipe)
        good = self.variation("good.json")
        for file in (pipe, link, "/dev/zero", "/proc/self/status", self.folder):
            for words in (["diff", good, str(file)], ["diff", str(file), good],
                          ["--simulate", "list", "--expect", str(file)],
                          ["--simulate", "list", "--rules", str(file)]):
                with self.subTest(words):
                    result = run(words, {"timeout": 10})
                    self.assertEqual((result.exit_code, result.out), (2, ""))
                    self.assertIn(f"cannot read '{file}': ", result.err)
                    self.assert_one_line(result.err)

    def test_recorded_machines_still_show_what_they_did(self):
        for recording in sorted((DATA / "recordings").glob("*.json")):
            asked = {int(code, 16) for moment in json.loads(recording.read_text())["trace"]["moments"]
                     for code in moment if isinstance(code, str)}
            changes = self.diff(str(recording), str(
                DATA.parents[1] / "simulator" / "machines" / recording.name), "--json").json["changes"]
            for change in changes:  # an item that has come since then was not asked
                codes = codes_of(int(change["id"], 16))
                self.assertFalse(asked.issuperset(int(code, 16) for code in codes), change)


if __name__ == "__main__":
    unittest.main()
