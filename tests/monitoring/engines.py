"""Programs under test and engines beside them: started on loopback, ended whatever happens."""
import contextlib
import json
import os
import pathlib
import shutil
import socket
import subprocess
import tempfile
import time
import unittest
import urllib.parse
import urllib.request

REPOSITORY = pathlib.Path(__file__).resolve().parents[2]
MONITORING = REPOSITORY / "tools/monitoring"
BUILD = pathlib.Path(os.environ["KOVA_BUILD"]).resolve()
KOVACTL = BUILD / "tools/kovactl/kovactl"
EXPORTER = BUILD / "tools/exporter/kova-exporter"


def free_ports(count):
    with contextlib.ExitStack() as stack:
        sockets = [stack.enter_context(socket.socket()) for _ in range(count)]
        for one in sockets:
            one.bind(("127.0.0.1", 0))
        return [one.getsockname()[1] for one in sockets]


def fetch(url):
    with urllib.request.urlopen(url, timeout=10) as answer:
        return answer.read().decode()


def query(prometheus, expression):
    url = f"{prometheus}/api/v1/query?" + urllib.parse.urlencode({"query": expression})
    return json.loads(fetch(url))["data"]["result"]


def wait_for(condition, seconds, what):
    """The first true answer of `condition`; fails the test when there is none in time."""
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        with contextlib.suppress(OSError, KeyError):
            if answer := condition():
                return answer
        time.sleep(0.2)
    raise AssertionError(f"not within {seconds} s: {what}")


class EngineTest(unittest.TestCase):
    """A folder of its own, and processes that end with the test."""

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="kova-engines-"))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)

    def start(self, *command):
        log = open(self.folder / f"{pathlib.Path(command[0]).name}.log", "ab")
        self.addCleanup(log.close)
        process = subprocess.Popen([str(word) for word in command], stdout=log, stderr=log,
                                   cwd=self.folder)
        self.addCleanup(self.end, process)
        return process

    @staticmethod
    def end(process):
        process.terminate()
        try:
            process.wait(10)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()

    def write(self, name, content):
        path = self.folder / name
        path.write_text(content if isinstance(content, str) else json.dumps(content))
        return path
