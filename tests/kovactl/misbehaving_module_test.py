"""kovactl against a module that misbehaves on purpose, fake_module.cpp."""
import unittest

from program import FAKE_MODULE, TestCase, run

FAKE = f"--module {FAKE_MODULE} "


class MisbehavingModule(TestCase):
    def test_that_does_not_start_ends_the_command_with_one_line(self):
        for scene, exit_code, message in (
            ("no device", 3, "is there; --simulate shows"),
            ("memory ran out", 3, "IOT_STATUS_NOT_READY (0xFFFFF0FF)"),
            ("no document", 3, "offers no items"),
            ("another module", 2, "is module 21, not 20"),
        ):
            with self.subTest(scene=scene):
                result = run(FAKE + "list --json", FAKE_MODULE=scene)
                self.assertEqual(result.exit_code, exit_code)
                self.assertIn(message, result.err)
                self.assert_one_line(result.err)
                self.assertIs(result.json["ok"], False)

    def test_library_without_the_seven_functions_is_refused(self):
        result = run("--module libjansson.so.4 list")
        self.assertEqual(result.exit_code, 2)
        self.assertIn("KovaIoTInitialize", result.err)

    def test_reading_is_what_was_filled_in_and_not_what_the_status_says(self):
        for item, text, exit_code, error in (
            ("0x14150911", "-0.5", 0, ""),  # an accelerometer's failure with a value is none
            ("0x14150711", "0", 0, ""),  # even if the value is what a careless preset would be
            ("0x14150912", "unreadable", 1, "the device did not answer (0xFFFFFAFF)"),
            ("0x14180101", "unreadable", 1, "the module answered without a value"),
            ("0x14190E00", "N/A", 0, ""),  # does not apply at present
            ("0x14160650", r"a\x1b[2J\x09b", 0, ""),
            ("0x14160746", "9.5", 0, ""),  # not in the document: the kinds are tried
            ("0x14140099", "unreadable", 1, "the module answered without a value"),
        ):
            with self.subTest(item=item):
                result = run(FAKE + "get --value-only " + item)
                self.assertEqual((result.out, result.exit_code), (text + "\n", exit_code))
                self.assertIn(error, result.err)

    def test_strange_elements_are_passed_over_and_failures_stop_no_other(self):
        result = run(FAKE + "list --json")
        self.assertEqual(result.exit_code, 1)
        self.assertIn("kovactl: 2 of 6 items could not be read\n", result.err)
        items = result.json["items"]
        self.assertEqual(len(items), 6)
        self.assertEqual((items[2]["value"], items[2]["code"]), (None, 0xFFFFFAFF))

    def test_codes_of_the_device_library_itself_are_told_as_such(self):
        result = run(FAKE + "set 0x14150911 1")
        self.assertEqual(result.exit_code, 1)
        self.assertIn("the device refused the value (0x11)", result.err)

    def test_names_and_texts_cannot_steer_a_terminal_or_break_a_format(self):
        self.assertNotIn("\x1b", run(FAKE + "list").out)
        self.assertIn('item="Red\x1b[31m \\"\\\\\\n",id="0x14160650"', run(FAKE + "metrics").out)
        self.assertIn({"n": "Fake/Package/Red__31m____", "vs": r"a\x1b[2J\x09b"},
                      run(FAKE + "senml").json)


if __name__ == "__main__":
    unittest.main()
