"""`kovactl watch`, and what the program draws on a terminal."""
import datetime
import json
import os
import pty
import signal
import subprocess
import time
import unittest

from items import item_count
from program import FAKE_MODULE, PROGRAM, TestCase, run

# Every device call moves the machine's clock by a second: port 1's voltage climbs 10 mV each.
CLIMBING = {"clock": {"step_ms": 1000},
            "codes": {"0x00250000": {"ramp": {"from": 0, "per_second": 10, "to": 90000}}}}


class Watch(TestCase):
    def test_prints_one_line_a_sample_when_piped(self):
        result = run("--simulate watch 0x14140B01 0x14200001 --interval 0.05 --count 3")
        self.assertEqual(result.exit_code, 1)  # one item cannot be read
        line = r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z\t0x14140B01=1\t0x14200001=unreadable\n"
        self.assertRegex(result.out, rf"\A({line}){{3}}\Z")
        taken = datetime.datetime.fromisoformat(result.out.partition("Z")[0] + "+00:00").timestamp()
        self.assertLess(abs(time.time() - taken), 60)

    def test_prints_one_json_document_a_line(self):
        result = run([*self.machine(**CLIMBING), "watch", "0x14140201", "--json", "--interval",
                      "0.05", "--count", "2"])
        self.assertEqual(result.exit_code, 0)
        first, second = map(json.loads, result.out.splitlines())
        self.assertLess(abs(time.time() - first["time"]), 60)
        self.assertLess(first["items"][0]["value"], second["items"][0]["value"])  # read afresh

    def test_with_changed_prints_everything_once_and_then_what_moves(self):
        result = run([*self.machine(**CLIMBING), "watch", "0x14140201", "0x14140B01", "--changed",
                      "--interval", "0.05", "--count", "3"])
        self.assertEqual(["0x14140B01" in line for line in result.out.splitlines()],
                         [True, False, False])

    def test_type_of_terminal_that_cannot_draw_gets_lines(self):
        for terminal_type in ("dumb", "", "no-such-terminal"):
            program = self.terminal("--simulate", "watch", "0x14140B01", "--count", "1",
                                    TERM=terminal_type)
            self.assertEqual(program.finish(), 0)
            self.assertRegex(program.screen, r"Z\t0x14140B01=1\r\n\Z")
            self.assertNotIn("\x1b", program.screen)


class WatchScreen(TestCase):
    """The values stand still on the screen; keys move what is seen of them."""
    def watch(self, *arguments, **options):
        options = {"LC_ALL": "C.UTF-8", "NO_COLOR": "", **options}
        return self.terminal("watch", "--interval", "0.05", *arguments, **options)

    def test_shows_changes_in_place_and_gives_the_terminal_back(self):
        program = self.watch(*self.machine(**CLIMBING), "0x14140201", "0x14140B01")
        program.wait_for_row("^sample 9 ")
        self.assertRegex(program.rows[1], r"^0x14140201  PoE 1 voltage  \* [0-9.]+ V +▁[▁-█]+█$")
        self.assertRegex(program.rows[2], "^0x14140B01  PoE 1 power      1 \\(Enable\\)  ▁▁▁▁")
        self.assertIn("\x1b[0;7m", program.screen, "a changed value is highlighted")
        program.press_control_c()
        self.assertEqual(program.finish(), 0)
        for what, given_back in (("cursor", "\x1b[?25h"), ("screen", "\x1b[?1049l")):
            self.assertIn(given_back, program.screen, what)
        # The terminal may still echo the Ctrl-C, but what was seen last stays, in rows of its own.
        self.assertRegex(program.screen.rpartition("\x1b")[2], r"PoE 1 power +1 \(Enable\)\r\n(\^C)?\Z")

    def test_marks_what_is_out_of_range_or_fails(self):
        machine = self.machine(codes={"0x00820000": 4231, "0x00820001": {"fail_read": 5}})
        program = self.watch(*machine, "0x14170111", "0x14170112", size=(10, 120))
        program.wait_for_row("^sample 3 at [0-9:]{8} UTC, [*] changed, ! out of range$")
        self.assertRegex(program.rows[1], "^0x14170111  TRK7K VTIN 1  ! 150 Cel +▁▁")
        self.assertRegex(program.rows[2], "^0x14170112  TRK7K VTIN 2    unreadable: the device did")
        self.assertRegex(program.screen, "\x1b[[0-9;]*31m150 Cel(?s:.)*\x1b[[0-9;]*33munreadable")
        for key, footer in (("x", "^arrow and page keys scroll, / searches, n next, "),
                            ("n", "^nothing to search for yet: /$"), (" ", "space go on  c changed"),
                            ("c", "^nothing has changed lately  q quit .* space go on  c all$"),
                            ("/ab\x7f", "^/a_$"), ("\x1b", "  c all$"), ("Q", "")):
            program.type(key)
            if footer:
                program.wait_for_row(footer)
        self.assertEqual(program.finish(), 1)

    def test_keys_move_what_is_seen(self):
        program = self.watch("--simulate", NO_COLOR="1", LC_ALL="C")
        items = item_count()
        for keys, row in (
            ("", f"^1-8 of {items} "),
            ("\x1b[6~", "^9-16 of "),  # page down
            ("\x1b[5~\x1bOB", "^2-9 of "),  # page up, arrow down
            ("kkk", "^1-8 of "),
            ("\x1bOF", f"^{items - 7}-{items} of {items}"),  # end
            ("/fan 4\n", "^0x14170314 .*fan 4"),
            ("/fan 4x", r"^/fan 4x_  \(no such item\)"),
            ("\x1b", "^[0-9-]+ of "),
            ("/ONBOARD fan SPEEDS\nnn", "^0x14170313 "),  # a package's name finds its items
            ("N", "^0x14170312 "),
            ("c", " of [0-9]+ changed "),
            (" ", "^sample [0-9]+ at .*, paused"),
        ):
            with self.subTest(keys=keys):
                program.type(keys)
                program.wait_for_row(row)
        self.assertNotRegex(program.screen, r"\x1b\[[0-9;]*[1-9]m", "colour")
        self.assertNotIn("▁", program.screen, "UTF-8 where the user has none")
        program.type("q")
        self.assertEqual(program.finish(), 0)

    def test_fits_every_size(self):
        program = self.watch("--simulate")
        for rows, columns, last in ((10, 40, "1-8"), (24, 80, "1-22"), (5, 20, "1-3"),
                                    (2, 20, "~ry"), (10, 200, "1-8")):
            number = program.wait_for_row("^sample").split()[1]
            program.resize(rows, columns)
            program.wait_for_row(f"^sample {int(number) + 4}")
            self.assertEqual(program.rows[-1].split()[0], last, "the last row")
            self.assertEqual(sum("3200 MT/s" in row for row in program.rows), rows > 5, "stale")
            if columns == 40:
                self.assertRegex(program.rows[5], r"SDRAM0/Rank +1 Ranks$")


class OnTerminal(TestCase):
    LIST = ("--simulate", "list", "--family", "PoE")

    def test_colours_only_there_and_only_if_wanted(self):
        for no_colour, check, text in (("", self.assertIn, "\x1b[1mPoE: PoE 1\x1b[0m"),
                                       ("1", self.assertNotIn, "\x1b")):
            program = self.terminal(*self.LIST, TERM="xterm", NO_COLOR=no_colour)
            self.assertEqual(program.finish(), 0)
            check(text, program.screen)
        self.assertNotIn("\x1b", run(self.LIST).out)

    def test_progress_names_what_is_read(self):
        program = self.terminal(*self.machine(bus={"delay_us": 4000}), "list", NO_COLOR="1")
        self.assertEqual(program.finish(), 0)
        self.assertRegex(program.screen, r"\rstarting the module, [0-9]+ s")
        self.assertRegex(program.screen, r"\rreading [0-9]+/[0-9]+, [A-Z]")
        self.assertIn("\r\x1b[K  ID ", program.screen, "taken away before the result")


class DeviceThatHangs(TestCase):
    """fake_module.cpp waits for ever when it reads the item that FAKE_MODULE names."""
    ITEM = "0x14150711"
    ARGUMENTS = ("--module", FAKE_MODULE)

    def test_time_limit_names_the_item(self):
        for command in ("list --json", f"get {self.ITEM} --json", f"set {self.ITEM} 1 --json",
                        "watch --json --interval 0.05", "metrics"):
            with self.subTest(command=command):
                result = run([*self.ARGUMENTS, *command.split(), "--timeout", "0.3"],
                             FAKE_MODULE="hangs")
                self.assertEqual(result.exit_code, 3)
                self.assertEqual(result.err,
                                 f"kovactl: {self.ITEM} GSensor/Settings/Measure mode did not answer within 0.3 s\n")
                if "--json" in command:
                    self.assertEqual(result.json["error"]["exit_code"], 3)
        self.assertEqual(run([*self.ARGUMENTS, "get", "0x14160650", "--timeout", "0.3"]).exit_code, 0)

    def test_control_c_ends_it_on_a_fresh_line(self):
        for command, wait, exit_code in (("list", "reading ", -signal.SIGINT),
                                         ("watch", "^waiting for 0x14150711 GSensor/Settings/Measure mode, [1-9][0-9]* s", 0)):
            with self.subTest(command=command):
                program = self.terminal(*self.ARGUMENTS, command, FAKE_MODULE="hangs")
                program.wait_for_row(wait)
                program.press_control_c()
                self.assertEqual(program.finish(), exit_code)
                after = program.rows if command == "list" else [
                    program.screen.rpartition("\x1b[?1049l")[2]]
                self.assertNotRegex("".join(after), "mode|Mode")

    def test_time_limit_gives_the_terminal_back(self):
        program = self.terminal(*self.ARGUMENTS, "watch", "--timeout", "0.5", FAKE_MODULE="hangs")
        self.assertEqual(program.finish(), 3)
        self.assertRegex(program.screen, r"\x1b\[\?1049l(?s:.)*did not answer within 0.5 s\r\n\Z")


class WithoutAReader(TestCase):
    def watch(self, *options, **streams):
        program = subprocess.Popen([PROGRAM, "--simulate", "watch", *options], **streams)
        self.addCleanup(program.wait)
        self.addCleanup(program.kill)
        return program

    def test_a_terminal_that_is_gone_ends_the_program(self):
        # Hang-ups may be ignored, as nohup wants it; nobody hears of this one.
        ours, its = pty.openpty()
        program = self.watch("--interval", "86400", stdin=its, stdout=its, stderr=its,
                             env={**os.environ, "TERM": "xterm"})
        os.close(its)
        seen = b""
        while b"\x1b[?1049h" not in seen:
            seen += os.read(ours, 4096)
        os.close(ours)
        program.wait(30)

    def test_a_reader_that_leaves_ends_it_quietly_and_at_once(self):
        for interval in ("0.05", "86400"):
            program = self.watch("--interval", interval, stdout=subprocess.PIPE,
                                 stderr=subprocess.PIPE)
            with program.stdout, program.stderr:
                self.assertIn(b"=", program.stdout.readline())
                program.stdout.close()
                self.assertEqual(program.wait(30), 0)
                self.assertEqual(program.stderr.read(), b"")

    def test_full_disk_is_told(self):
        with open("/dev/full", "wb") as full:
            result = subprocess.run([PROGRAM, "--simulate", "list"], stdout=full,
                                    stderr=subprocess.PIPE)
        self.assertEqual(result.returncode, 1)
        self.assertIn(b"cannot write the output", result.stderr)


if __name__ == "__main__":
    unittest.main()
