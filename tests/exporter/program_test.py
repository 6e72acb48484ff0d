"""kova-exporter as it ships, on simulated machines: it is asked over loopback and told to end."""
import concurrent.futures
import json
import os
import pathlib
import signal
import socket
import subprocess
import tempfile
import time
import unittest
import urllib.error
import urllib.request

from items import BASE

PROGRAM = os.environ["KOVA_EXPORTER"]
KOVACTL = os.environ["KOVACTL"]


class Exporter:
    """A running exporter on a port of its own."""
    def __init__(self, test, *options, **environment):
        self.process = subprocess.Popen(
            [PROGRAM, "--web.listen-address", "127.0.0.1:0", *options], stderr=subprocess.PIPE,
            text=True, env={**os.environ, **environment})
        test.addCleanup(self.end)
        line = self.process.stderr.readline()
        test.assertIn("listening on http://", line)
        self.url = line.split()[-1]

    def end(self):
        if self.process.poll() is None:
            self.process.kill()
            self.process.wait()
        self.process.stderr.close()

    def get(self, path, **headers):
        """Status, headers and text of an answer, whatever its status is."""
        request = urllib.request.Request(self.url + path, headers=headers)
        try:
            with urllib.request.urlopen(request, timeout=10) as answer:
                return answer.status, answer.headers, answer.read().decode()
        except urllib.error.HTTPError as error:
            with error:
                return error.code, error.headers, error.read().decode()

    def text(self, path, **headers):
        return self.get(path, **headers)[2]

    def json(self, path):
        return json.loads(self.text(path))

    def wait_until(self, condition):
        for _ in range(200):
            if condition():
                return
            time.sleep(0.05)
        raise AssertionError("waited in vain")

    def wait_for_sweep(self, number=1):
        self.wait_until(lambda: f"\nkova_sweeps_total {number}\n" in self.text("/metrics"))

    def terminate(self):
        start = time.monotonic()
        self.process.send_signal(signal.SIGTERM)
        return self.process.wait(10), time.monotonic() - start


class Program(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="exporter.")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def machine(self, **description):
        file = self.folder / "machine.json"
        file.write_text(json.dumps({"base": BASE, "clock": {"step_ms": 0}, **description}))
        return ["--simulate", str(file)]

    def test_answers_are_those_of_kovactl(self):
        machine = self.machine(codes={"0x00240001": {"fail_read": 5}})
        exporter = Exporter(self, *machine, "--interval", "1m")
        exporter.wait_for_sweep()
        listed = json.loads(subprocess.run([KOVACTL, *machine, "list", "--json"],
                                           capture_output=True, check=False).stdout)
        items = exporter.json("/api/v1/items")
        noisy = ("noise", "value", "label")
        def still(rows):
            return [{key: row[key] for key in row if key not in noisy} for row in rows]
        self.assertEqual(still(items["items"]), still(listed["items"]))
        self.assertIs(items["ok"], False)
        failed = [row["name"] for row in items["items"] if not row["ok"]]
        self.assertEqual(failed, ["PoE 2 current"])

        printed = subprocess.run([KOVACTL, *machine, "metrics"], capture_output=True, text=True,
                                 check=False).stdout
        def names(text):
            return {line.rpartition(" ")[0] for line in text.splitlines()}
        only_here = names(exporter.text("/metrics")) - names(printed)
        self.assertEqual({name.split()[-1 if name[0] != "#" else 2] for name in only_here},
                         {"kova_sweep_age_seconds", "kova_sweep_interval_seconds",
                          "kova_sweeps_total"})

    def test_rules_of_a_file(self):
        machine = self.machine(codes={"0x00822003": 0, "0x00B0004F": 65})
        rules = self.folder / "rules.json"
        for content, kinds in (
                ({}, {"fan-stopped"}),
                ({"rules": {"fan-stopped": "off"}, "warn": {"Power input": "13:"}}, {"limit"}),
                ({"rules": {"fan-stopped": "off"}, "warn": {"no such": "1"}}, set())):
            with self.subTest(content=content):
                rules.write_text(json.dumps(content))
                exporter = Exporter(self, *machine, "--interval", "1m", "--rules.file", str(rules))
                exporter.wait_for_sweep()
                findings = exporter.json("/api/v1/items")["findings"]
                self.assertEqual({finding["rule"] for finding in findings}, kinds)
                exporter.terminate()
                self.assertEqual("do not hold" in exporter.process.stderr.read(), kinds == set())

    def test_fifty_scrapes_cost_one_sweep(self):
        exporter = Exporter(self, "--simulate", "--interval", "1m")
        exporter.wait_for_sweep()
        with concurrent.futures.ThreadPoolExecutor(50) as pool:
            texts = list(pool.map(lambda _: exporter.text("/metrics"), range(50)))
        self.assertTrue(all("\nkova_sweeps_total 1\n" in text for text in texts))
        status, headers, text = exporter.get("/metrics", Accept="application/openmetrics-text")
        self.assertEqual((status, text[-6:]), (200, "# EOF\n"))
        self.assertIn("version=1.0.0", headers["Content-Type"])

    def test_events_follow_the_sweeps_and_the_history_grows(self):
        exporter = Exporter(self, "--simulate", "--interval", "100ms")
        numbers = []
        with urllib.request.urlopen(exporter.url + "/api/v1/events", timeout=10) as stream:
            self.assertEqual(stream.headers["Content-Type"], "text/event-stream")
            while len(numbers) < 4:
                line = stream.readline().decode()
                if line.startswith("data: ") and '"values"' in line:
                    event = json.loads(line[6:])
                    numbers.append(event["sweep"]["number"])
        self.assertEqual(numbers, list(range(numbers[0], numbers[0] + 4)))
        items = exporter.json("/api/v1/items")["items"]
        self.assertEqual(len(event["values"]), len(items))
        self.assertEqual(event["failed"], {})
        history = exporter.json("/api/v1/history?item=TRK7K%20VTIN%201")
        self.assertEqual(list(history["series"]), ["0x14170111"])
        self.assertEqual(len(history["series"]["0x14170111"]), len(history["times"]))

    def test_a_device_that_is_not_there_is_looked_for_again(self):
        # An add-on board that answers after a second or so, with its first temperature only.
        board = {"0x00800000": {"ramp": {"from": 0, "to": 1, "seconds": 1}}, "0x00820000": 3000}
        file = self.folder / "late.json"
        file.write_text(json.dumps({"codes": board}))
        exporter = Exporter(self, "--simulate", str(file), "--interval", "200ms")
        exporter.wait_until(lambda: "no device" in exporter.text("/healthz"))
        self.assertEqual(exporter.get("/healthz")[0], 503)
        self.assertEqual(exporter.json("/api/v1/items")["items"], [])
        self.assertIn("\nkova_up 0\n", exporter.text("/metrics"))
        exporter.wait_until(lambda: exporter.text("/healthz") == "ok\n")
        self.assertIn("kova_temperature_celsius{", exporter.text("/metrics"))
        self.assertEqual(exporter.terminate()[0], 0)

    def test_a_device_that_hangs_holds_up_nobody(self):
        exporter = Exporter(self, *self.machine(bus={"delay_us": 10000000}), "--interval", "1s")
        start = time.monotonic()
        self.assertIn("\nkova_up 0\n", exporter.text("/metrics"))
        self.assertEqual(exporter.json("/api/v1/items")["sweep"]["number"], 0)
        self.assertLess(time.monotonic() - start, 5)  # a call to the device takes ten
        code, seconds = exporter.terminate()
        self.assertEqual(code, 0)
        self.assertLess(seconds, 4)  # two, on a machine that is not busy

    def test_a_socket_file_goes_with_the_program(self):
        path = self.folder / "http.sock"
        hanging = self.machine(bus={"delay_us": 10000000})
        for machine, end in ((["--simulate"], signal.SIGINT), (["--simulate"], signal.SIGHUP),
                             (hanging, signal.SIGTERM)):
            with subprocess.Popen([PROGRAM, *machine, "--web.listen-address", f"unix:{path}"],
                                  stderr=subprocess.PIPE, text=True) as program:
                self.addCleanup(program.kill)
                self.assertIn(f"listening on unix:{path}\n", program.stderr.readline())
                with socket.socket(socket.AF_UNIX) as client:
                    client.connect(str(path))
                    client.sendall(b"GET /api/v1/items HTTP/1.1\r\nHost: any.name\r\n\r\n")
                    self.assertEqual(client.recv(12), b"HTTP/1.1 200")
                time.sleep(0.5 if machine == hanging else 0)  # until it hangs
                program.send_signal(end)
                self.assertEqual(program.wait(10), 0)
            self.assertFalse(path.exists())

    def test_each_request_and_sweep_is_logged_if_wanted(self):
        exporter = Exporter(self, *self.machine(), "--log.level", "debug")
        exporter.wait_for_sweep()
        machine = exporter.json("/api/v1/items")["machine"]
        self.assertEqual(machine, {"name": socket.gethostname(), "simulated": "machine"})
        self.assertEqual(exporter.get("/metrics", Host="evil.example")[0], 403)
        self.assertEqual(exporter.terminate()[0], 0)
        log = exporter.process.stderr.read()
        for line in (r"info: the device has \d+ items", r"debug: sweep 1: \d+\.\d{3} s",
                     "debug: GET /api/v1/items -> 200", "debug: GET /metrics -> 403"):
            self.assertRegex(log, rf"(?m)^kova-exporter: {line}$")

    def test_service_manager_is_told(self):
        path = str(self.folder / "notify")
        with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as manager:
            manager.bind(path)
            manager.settimeout(10)
            exporter = Exporter(self, "--simulate", NOTIFY_SOCKET=path, WATCHDOG_USEC="30000000")
            told = ""
            while not all(word in told for word in ("READY=1", "WATCHDOG=1", "STATUS=sweeps")):
                told += manager.recv(4096).decode() + "\n"
            self.assertEqual(exporter.terminate()[0], 0)
            while "STOPPING=1" not in told:
                told += manager.recv(4096).decode() + "\n"
            self.assertRegex(told, r"(?m)^STATUS=sweeps take \d+\.\d{3} s$")
            # Who has no watchdog is not told to it; what is wrong is told, readiness only once.
            exporter = Exporter(self, "--interval", "100ms", NOTIFY_SOCKET=path)
            told = ""
            while told.count("STATUS=no device found: ") < 3:
                told += manager.recv(4096).decode() + "\n"
            self.assertEqual((told.count("READY=1"), told.count("WATCHDOG=1")), (1, 0))
            self.assertEqual(exporter.terminate()[0], 0)

    def test_what_cannot_be_done_is_told_in_one_line(self):
        with socket.socket() as taken:
            taken.bind(("127.0.0.1", 0))
            taken.listen()
            busy = f"127.0.0.1:{taken.getsockname()[1]}"
            for arguments, code, text in (
                (["--web.listen-address", busy], 1, "Address already in use"),
                (["--web.listen-address", "unix:/no/such/folder"], 1, "No such file"),
                (["--web.listen-address", "127.0.0.1:0", "--module", "/none"], 2, "/none"),
                (["--web.listen-address", "127.0.0.1:0", "--simulate", "none"], 2, "none"),
                (["--interval", "soon"], 2, "soon"),
                (["extra"], 2, "extra"),
            ):
                with self.subTest(arguments=arguments):
                    done = subprocess.run([PROGRAM, *arguments, "--log.level", "error"],
                                          capture_output=True, text=True, timeout=10, check=False)
                    self.assertEqual(done.returncode, code)
                    self.assertRegex(done.stderr, rf"\Akova-exporter: error: [^\n]*{text}[^\n]*\n\Z")

        usage = subprocess.check_output([PROGRAM, "--help"], text=True)
        for option in ("--web.listen-address ADDRESS", "--interval TIME", "--module PATH",
                       "--simulate [MACHINE]", "--log.level LEVEL", "Exit codes: 0 "):
            self.assertIn(option, usage)
        with open("/dev/full", "wb") as full:
            self.assertEqual(subprocess.call([PROGRAM, "--version"], stdout=full), 1)


if __name__ == "__main__":
    unittest.main()
