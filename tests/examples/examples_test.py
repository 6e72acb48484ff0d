"""Runs the example hosts: on the simulated device, and with everything that can be wrong.

Usage: examples_test.py MODULE PRELOAD C_HOST SOURCE_FOLDER
PRELOAD is LD_PRELOAD's value with the simulated device library in it.
"""
import json
import os
import pathlib
import re
import subprocess
import sys
import unittest

MODULE, PRELOAD, C_HOST, SOURCE_FOLDER = sys.argv[1:]
SOURCE = pathlib.Path(SOURCE_FOLDER)
EXAMPLES = SOURCE / "examples"
HOSTS = ([C_HOST], [sys.executable, str(EXAMPLES / "minimal_host.py")])
RUNTIMES = PRELOAD.rpartition(":")[0]  # what stays preloaded when the simulator does not


def run(host, *arguments, preload=PRELOAD):
    # The interpreter keeps memory to its end, which is no leak of ours.
    leaks = {} if host == [C_HOST] else {"ASAN_OPTIONS": "detect_leaks=0"}
    environment = {**os.environ, **leaks, "LD_PRELOAD": preload, "KOVA_SIM_MACHINE": ""}
    return subprocess.run([*host, *arguments], env=environment, capture_output=True, text=True,
                          timeout=60)


class Examples(unittest.TestCase):
    def test_prints_the_document_and_reads_and_writes_an_item(self):
        for host in HOSTS:
            with self.subTest(host=host):
                result = run(host, MODULE)
                self.assertEqual((result.returncode, result.stderr), (0, ""))
                document, _, rest = result.stdout.partition("\n}\n")
                self.assertIn("Real-time status", json.loads(document + "}")["PIC"])
                # The simulated controller's first setting.
                self.assertEqual(rest, "ignition delay on: 10 s\nwritten back\n")

    def test_tells_on_one_line_what_is_wrong(self):
        no_device = {"preload": RUNTIMES}
        for arguments, options, reason in (
            ([], {}, "usage: "),
            ([MODULE, "more"], {}, "usage: "),
            (["/nonexistent/module.so"], {}, "/nonexistent/module.so: cannot open"),
            (["libm.so.6"], {}, "undefined symbol: KovaIoTInitialize"),
            ([MODULE], no_device, "KovaIoTInitialize: status 0xFFFFFBFF"),
        ):
            for host in HOSTS:
                with self.subTest(host=host, arguments=arguments):
                    result = run(host, *arguments, **options)
                    self.assertEqual((result.returncode, result.stdout), (1, ""))
                    self.assertIn(reason, result.stderr)
                    self.assertEqual(result.stderr.count("\n"), 1)

    def test_the_guide_shows_the_example_as_it_is(self):
        guide = (SOURCE / "docs/host-guide.md").read_text()
        text = (EXAMPLES / "minimal_host.c").read_text()
        excerpt = re.search(r"^static int use\(.*?^}$", text, re.DOTALL | re.MULTILINE).group()
        self.assertIn(f"\n{excerpt}\n```\n", guide)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
