"""`kovactl watch`, and what the program draws on a terminal."""
import json
import subprocess
import unittest

from program import PROGRAM, TestCase, run

# Every device call moves the machine's clock by a second: port 1's voltage climbs 10 mV each.
CLIMBING = {"clock": {"step_ms": 1000},
            "codes": {"0x00250000": {"ramp": {"from": 0, "per_second": 10, "to": 90000}}}}


class Watch(TestCase):
    def test_prints_one_line_a_sample_when_piped(self):
        result = run("--simulate watch 0x14140B01 0x14200001 --interval 0.05 --count 3")
        self.assertEqual(result.exit_code, 1)  # one item cannot be read
        line = r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ\t0x14140B01=1\t0x14200001=unreadable\n"
        self.assertRegex(result.out, rf"\A({line}){{3}}\Z")

    def test_prints_one_json_document_a_line(self):
        result = run([*self.machine(**CLIMBING), "watch", "0x14140201", "--json", "--interval",
                      "0.05", "--count", "2"])
        self.assertEqual(result.exit_code, 0)
        first, second = map(json.loads, result.out.splitlines())
        self.assertIsInstance(first["time"], float)
        self.assertLess(first["items"][0]["value"], second["items"][0]["value"])  # read afresh

    def test_redraws_in_place_until_control_c_and_leaves_the_terminal_in_order(self):
        program = self.terminal(*self.machine(**CLIMBING), "watch", "0x14140201", "0x14140B01",
                                "--interval", "0.05", LC_ALL="C.UTF-8", TERM="xterm", NO_COLOR="")
        program.wait_for("sample 3 ")
        program.press_control_c()
        self.assertEqual(program.finish(), 0)
        self.assertIn("\x1b[?25l", program.screen, "cursor hidden")
        self.assertIn("\x1b[3A", program.screen, "moved up over title and two items")
        self.assertRegex(program.screen, r"\* \x1b\[7m[0-9.]+ V", "changed")
        self.assertIn("▁█", program.screen, "a climbing value's bars")
        # The terminal may still echo the Ctrl-C behind it.
        self.assertRegex(program.screen, r"\x1b\[\?7h\x1b\[\?25h(\^C)?\Z", "cursor given back")

    def test_shows_what_fits_and_says_so(self):
        # The title and the cursor take two of the ten rows, the note another.
        ids = [f"0x14140{kind}{port:02}" for kind in ("2", "4", "B") for port in (1, 2, 3, 4)]
        for items, note in ((ids[:8], None), (ids[:9], "\r2 more do not fit"),
                            ([], "more do not fit")):
            program = self.terminal("--simulate", "watch", *items, "--count", "2", "--interval",
                                    "0.05", NO_COLOR="1", LC_ALL="C")
            self.assertEqual(program.finish(), 0)
            self.assertIn(note or "", program.screen)
            self.assertEqual("more do not fit" in program.screen, note is not None)
            self.assertIn("\x1b[9A", program.screen, "one row less than the terminal has")
            self.assertNotRegex(program.screen, r"\x1b\[[0-9;]*m", "colour")
            self.assertNotIn("▁", program.screen, "UTF-8 where the user has none")


class OnTerminal(TestCase):
    LIST = ("--simulate", "list", "--family", "PoE")

    def test_colours_only_there_and_only_if_wanted(self):
        for no_colour, check, text in (("", self.assertIn, "\x1b[1mPoE: PoE 1\x1b[0m"),
                                       ("1", self.assertNotIn, "\x1b")):
            program = self.terminal(*self.LIST, TERM="xterm", NO_COLOR=no_colour)
            self.assertEqual(program.finish(), 0)
            check(text, program.screen)
        self.assertNotIn("\x1b", run(self.LIST).out)

    def test_shows_progress_of_slow_work(self):
        program = self.terminal(*self.machine(bus={"delay_us": 4000}), "list", NO_COLOR="1")
        self.assertEqual(program.finish(), 0)
        self.assertRegex(program.screen, r"\rstarting the module, [0-9]+ s")
        self.assertRegex(program.screen, r"\rreading [0-9]+/[0-9]+")
        self.assertIn("\r\x1b[K  ID ", program.screen, "taken away before the result")


class InPipe(TestCase):
    def test_reader_that_leaves_ends_the_program_quietly(self):
        command = [PROGRAM, "--simulate", "watch", "--interval", "0.05"]
        with subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE) as program:
            self.assertIn(b"=", program.stdout.readline())
            program.stdout.close()
            self.assertEqual(program.stderr.read(), b"")
            self.assertEqual(program.wait(), 0)

    def test_full_disk_is_told(self):
        with open("/dev/full", "wb") as full:
            result = subprocess.run([PROGRAM, "--simulate", "list"], stdout=full,
                                    stderr=subprocess.PIPE)
        self.assertEqual(result.returncode, 1)
        self.assertIn(b"cannot write the output", result.stderr)


if __name__ == "__main__":
    unittest.main()
