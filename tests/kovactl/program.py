"""Runs the built kovactl, with its output in pipes or on a terminal of its own.

The environment names it: KOVACTL is the program, KOVACTL_VERSION what it should be, and
KOVACTL_FAKE_MODULE a module that misbehaves, KOVACTL_SCHEMA the contract for --json.
"""
import json
import os
import pathlib
import pty
import re
import resource
import signal
import subprocess
import tempfile
import termios
import unittest

import jsonschema
import pyte

from items import BASE

PROGRAM = os.environ["KOVACTL"]
VERSION = os.environ["KOVACTL_VERSION"]
FAKE_MODULE = os.environ["KOVACTL_FAKE_MODULE"]
SCHEMA = json.loads(pathlib.Path(os.environ["KOVACTL_SCHEMA"]).read_text())
# The part of the schema that a command's output is: its description begins with the commands.
PARTS = {command: name for name, part in SCHEMA["$defs"].items()
         for command in part.get("description", "").partition(":")[0].split(", ")}


def parse(text):
    """A JSON document, which must not say anything twice."""
    def unique(pairs):
        if len(dict(pairs)) < len(pairs):
            raise ValueError(f"a key twice in {pairs}")
        return dict(pairs)
    return json.loads(text, object_pairs_hook=unique)


def hold_to_contract(command, text):
    """Fails unless `text` is what docs/json.schema.json says of the command's output."""
    for document in map(parse, text.splitlines() if command == "watch" else [text]):
        part = "error" if "error" in document else PARTS[command]
        contract = jsonschema.Draft202012Validator(
            {"$ref": f"#/$defs/{part}", "$defs": SCHEMA["$defs"]})
        error = jsonschema.exceptions.best_match(contract.iter_errors(document))
        if error is not None:
            raise AssertionError(f"{command} --json breaks the contract: {error.message}")


class Result:
    def __init__(self, exit_code, out, err):
        self.exit_code, self.out, self.err = exit_code, out.decode(), err.decode()

    @property
    def json(self):
        """stdout, which has to be one JSON document."""
        return parse(self.out)


def run(arguments, options=None, **environment):
    """Runs the program to its end. `arguments` is a list, or a text that is split at blanks.

    `options` are subprocess.run's own; `environment` is added to the test's.
    """
    words = arguments.split() if isinstance(arguments, str) else arguments
    done = subprocess.run([PROGRAM, *words], env={**os.environ, **environment},
                          capture_output=True, **(options or {}))
    result = Result(done.returncode, done.stdout, done.stderr)
    if "--json" in words and "complete" not in words:
        hold_to_contract(next((w for w in words if w in PARTS), ""), result.out)
    return result


def preloading(variable):
    """The environment of a program before which the test's library of that name is loaded."""
    return {"LD_PRELOAD": f"{os.environ['KOVACTL_RUNTIMES']}:{os.environ[variable]}"}


def full_disk(size):
    """Options for run(): no file may grow beyond so many bytes."""
    def fill():
        signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
        resource.setrlimit(resource.RLIMIT_FSIZE, (size, size))
    return {"preexec_fn": fill}


class Terminal:
    """The program on a pseudo-terminal of SIZE rows and columns, for stdin, stdout and stderr.

    A session whose leader ends loses what its terminal has not handed over. So the leader is a
    process in between, which stays until it is killed. The exit code comes as the last text on the
    terminal: whoever has seen it has seen all that was shown before.
    """
    END = re.compile(rb"\0ended with (-?\d+)\0")

    def __init__(self, *arguments, size=(10, 80), **environment):
        self._seen = b""
        self._size = size
        self._emulator = pyte.Screen(size[1], size[0])
        self._stream = pyte.ByteStream(self._emulator)
        self._leader, self._descriptor = pty.fork()
        if self._leader == 0:
            try:
                self._lead([PROGRAM, *arguments], {**os.environ, "TERM": "xterm", **environment})
            finally:
                os._exit(1)

    def _lead(self, command, environment):
        signal.signal(signal.SIGINT, lambda *_: None)  # unlike SIG_IGN not inherited
        termios.tcsetwinsize(0, self._size)
        exit_code = subprocess.call(command, env=environment)
        os.write(1, b"\0ended with %d\0" % exit_code)
        while True:
            signal.pause()

    @property
    def screen(self):
        """All that was sent to the terminal, escape sequences included."""
        return self.END.sub(b"", self._seen).decode(errors="replace")

    @property
    def rows(self):
        """What a terminal shows of it."""
        return [row.rstrip() for row in self._emulator.display]

    def _read(self):
        text = os.read(self._descriptor, 4096)
        self._seen += text
        self._stream.feed(text.partition(b"\0")[0])

    def wait_for(self, text):
        """Reads until `text` has been seen since the start."""
        while text.encode() not in self._seen:
            if self.END.search(self._seen):
                raise AssertionError(f"ended without {text!r}: {self.screen!r}")
            self._read()

    def wait_for_row(self, pattern):
        """Reads until a row on the screen matches, and gives that row."""
        while not (found := [row for row in self.rows if re.search(pattern, row)]):
            if self.END.search(self._seen):
                raise AssertionError(f"ended without {pattern!r}: {self.rows}")
            self._read()
        return found[0]

    def resize(self, rows, columns):
        self._emulator.resize(rows, columns)
        termios.tcsetwinsize(self._descriptor, (rows, columns))

    def type(self, keys):
        os.write(self._descriptor, keys.encode())

    def press_control_c(self):
        self.type("\x03")

    def finish(self):
        """Reads the rest and gives the exit code, or a signal's number, negative."""
        while not (end := self.END.search(self._seen)):
            self._read()
        return int(end[1])

    def close(self):
        os.close(self._descriptor)  # which hangs up a program that still runs
        os.kill(self._leader, signal.SIGKILL)
        os.waitpid(self._leader, 0)


class TestCase(unittest.TestCase):
    """A test with a folder of its own, and terminals that do not outlive it."""
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="kovactl.")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def machine(self, **description):
        """A description of the built-in machine with changes, and the option that names it."""
        file = self.folder / "machine.json"
        file.write_text(json.dumps({"base": BASE, **description}))
        return ["--simulate", str(file)]

    def terminal(self, *arguments, **options):
        terminal = Terminal(*arguments, **options)
        self.addCleanup(terminal.close)
        return terminal

    def check(self, cases):
        """Runs cases of arguments, exit code, part of stdout and part of stderr, "" for empty."""
        for arguments, exit_code, out, err in cases:
            with self.subTest(arguments=arguments):
                result = run(arguments)
                self.assertEqual(result.exit_code, exit_code, result.err)
                for part, whole in ((out, result.out), (err, result.err)):
                    self.assertIn(part, whole)
                    self.assertEqual(part == "", whole == "", whole)
                if err:
                    self.assert_one_line(result.err)

    def assert_one_line(self, text):
        self.assertRegex(text, r"\A[^\n]+\n\Z")
