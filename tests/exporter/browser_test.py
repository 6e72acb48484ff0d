"""The live page and the report in headless Chromium, on the programs that were built.

Usage: browser_test.py BUILD_FOLDER [unittest's arguments]
Screenshots go to BUILD_FOLDER/browser.
"""
import json
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

from selenium import webdriver
from selenium.common.exceptions import StaleElementReferenceException
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import WebDriverWait

BUILD = pathlib.Path(sys.argv.pop(1) if len(sys.argv) > 1 else "build/dev").resolve()
SHOTS = BUILD / "browser"
WIDE, NARROW = (1400, 1000), (360, 740)

# A failing item, one beyond its range, and a part number that a careless page would run.
HOSTILE = "</script><img src=x>"
MACHINE = {
    "base": "builtin",
    "codes": {
        "0x00B00017": {"fail_read": 110},
        "0x00820000": 3932,  # tenths of a kelvin: 120 degrees
        "0x00A00011..0x00A00015": {"text": HOSTILE},
    },
}
PROBLEMS = [("CycleCount", "the device did not answer (0x6E)"), ("TRK7K VTIN 1", "is outside its published range")]
PART_NUMBER = "0x14181101"
FAN = "0x14170311"
CURRENT = "0x14140401"  # of the first port
IGNITION = "0x14160801"


def chromium(profile):
    options = webdriver.ChromeOptions()
    options.binary_location = "/usr/bin/chromium"
    for argument in ("headless", "no-sandbox", "disable-gpu", "disable-quic", "no-first-run",
                     "disable-background-networking", "disable-component-update", "disable-sync",
                     f"user-data-dir={profile}"):
        options.add_argument(f"--{argument}")
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    browser = webdriver.Chrome(options=options, service=Service("/usr/bin/chromedriver"))
    # A page that keeps its stream when it is left takes one of six connections away from the next.
    browser.set_page_load_timeout(20)
    return browser


class Exporter:
    """kova-exporter on a loopback port of its own, a sweep every 0.3 s."""
    def __init__(self, machine, port=0):
        self._process = subprocess.Popen(
            [BUILD / "tools/exporter/kova-exporter", "--simulate", machine, "--interval", "300ms",
             "--web.listen-address", f"127.0.0.1:{port}"], stderr=subprocess.PIPE, text=True)
        line = ""
        while not (found := re.search(r"http://127\.0\.0\.1:(\d+)", line)):
            line = self._process.stderr.readline()
            if line == "":
                raise AssertionError("kova-exporter ended at once")
        self.port = int(found[1])
        self.url = found[0] + "/"

    def stop(self):
        self._process.terminate()
        self._process.wait()
        self._process.stderr.close()


class BrowserTest(unittest.TestCase):
    """A page in a browser that is to have nothing to complain of."""
    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(cls.enterClassContext(
            tempfile.TemporaryDirectory(prefix="kova-browser.")))
        cls.machine = cls.folder / "machine.json"
        cls.machine.write_text(json.dumps(MACHINE))
        cls.browser = chromium(cls.folder / "profile")
        cls.addClassCleanup(cls.browser.quit)
        SHOTS.mkdir(exist_ok=True)

    def open(self, url, size=WIDE, dark=False):
        self.browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
            "width": size[0], "height": size[1], "deviceScaleFactor": 1, "mobile": size == NARROW})
        self.browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": [
            {"name": "prefers-color-scheme", "value": "dark" if dark else "light"}]})
        self.browser.get("about:blank")  # the same address with another fragment would not load
        self.browser.get(url)
        self.wait_for(lambda: self.texts("li.item"))

    def tearDown(self):
        self.browser.get("about:blank")  # before its exporter ends
        self.assertEqual(self.complaints(), [])

    def complaints(self):
        return [entry["message"] for entry in self.browser.get_log("browser")]

    def wait_for(self, condition):
        """Waits until it is true; it may look while the page changes."""
        return WebDriverWait(self.browser, 20, 0.1, [StaleElementReferenceException]).until(
            lambda _: condition())

    def one(self, selector):
        return self.browser.find_element(By.CSS_SELECTOR, selector)

    def texts(self, selector):
        return [node.text for node in self.browser.find_elements(By.CSS_SELECTOR, selector)]

    def value(self, item):
        return self.one(f"li[data-id='{item}'] .value").get_property("textContent")

    def press(self, *keys):
        ActionChains(self.browser).send_keys(*keys).perform()

    def picture(self, selector):
        """What a canvas shows; None while there is no canvas."""
        return self.browser.execute_script(
            "return document.querySelector(arguments[0])?.toDataURL()", selector)

    def check_drawn(self, canvas):
        """The first item's line is there, in the colour that the table gives it."""
        colour = self.one(".swatch").value_of_css_property("border-top-color")
        wanted = [int(part) for part in re.findall(r"\d+", colour)[:3]]
        self.wait_for(lambda: self.browser.execute_script("""
            const [canvas, colour] = arguments;
            const {data} = canvas.getContext("2d").getImageData(0, 0, canvas.width, canvas.height);
            return data.filter((_, i) => i % 4 === 0 && data[i + 3] > 100 &&
              colour.every((part, c) => Math.abs(part - data[i + c]) < 8)).length > 20;""",
            self.one(canvas), wanted))

    def shoot(self, name):
        self.browser.save_screenshot(str(SHOTS / f"{name}.png"))

    def check_problems(self):
        shown = self.wait_for(lambda: self.texts("#attention li"))
        self.assertEqual(len(shown), len(PROBLEMS), shown)
        for line, parts in zip(shown, PROBLEMS):
            for part in parts:
                self.assertIn(part, line)
        top = [self.one(part).rect["y"] for part in ("#attention", "#items")]
        self.assertEqual(top, sorted(top))

    def check_fits(self):
        width = self.browser.execute_script("return document.documentElement.scrollWidth")
        self.assertLessEqual(width, self.browser.execute_script("return innerWidth"))


CANVAS = ".panel canvas:not([style*='z-index'])"


class LivePage(BrowserTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.exporter = Exporter(cls.machine)
        cls.addClassCleanup(lambda: cls.exporter.stop())

    def setUp(self):
        self.open(self.exporter.url)

    def test_shows_values_as_they_move_and_what_is_wrong_on_top(self):
        self.check_problems()
        self.assertEqual(self.value(PART_NUMBER), HOSTILE)
        self.assertEqual(self.value(IGNITION), "0 (OFF)")
        seen = {self.value(FAN)}
        self.wait_for(lambda: seen.add(self.value(FAN)) or len(seen) > 3)
        for text in seen:
            self.assertRegex(text, r"^3\d\d\d RPM$")
        self.shoot("wide")
        line = self.one(f"li[data-id='{FAN}'] path")
        self.browser.execute_script("arguments[0].scrollIntoView()", line)
        self.wait_for(lambda: "L" in (line.get_attribute("d") or ""))

    def test_plots_items_together_and_reads_values_under_the_cursor(self):
        for item in (FAN, CURRENT, IGNITION):
            self.one(f"li[data-id='{item}'] button").click()
        self.wait_for(lambda: len(self.texts(".panel h3")) == 3)
        self.assertEqual(self.texts(".panel h3"), ["RPM", "mA", "States"])
        first = self.wait_for(lambda: self.picture(CANVAS))
        self.wait_for(lambda: self.picture(CANVAS) != first)
        self.check_drawn(CANVAS)
        ActionChains(self.browser).move_to_element_with_offset(self.one(".plot"), 60, 0).perform()
        self.wait_for(lambda: re.match(r"\d\d:\d\d:\d\d$", self.one("#legend-when").text))
        self.assertTrue(self.one(".panel:nth-child(2) .cursor").is_displayed())
        self.shoot("chart")
        self.browser.refresh()  # the address knows what is plotted
        self.wait_for(lambda: len(self.texts("#legend tbody tr")) == 3)

    def test_is_used_from_the_keyboard(self):
        self.press("/", "onboard fan")
        self.wait_for(lambda: self.one("#found").text == "7 items")
        self.press(Keys.ARROW_DOWN, Keys.ARROW_DOWN, Keys.ENTER)
        self.wait_for(lambda: self.texts("#legend tbody th") == ["TRK7K OB fan 2"])
        self.wait_for(lambda: self.texts(".panel"))
        self.browser.execute_script("document.querySelector('#panels').focus()")
        self.press(Keys.ARROW_LEFT, Keys.ARROW_LEFT)
        said = self.one("#cursor").get_property("textContent")
        self.assertRegex(said, r"^\d\d:\d\d:\d\d: TRK7K OB fan 2 \d+ RPM$")
        self.press(Keys.HOME)
        self.wait_for(lambda: self.one("#spans button:last-child[aria-pressed=true]"))

    def test_fits_a_phone_and_a_dark_room(self):
        url = f"{self.exporter.url}#plot={FAN}"
        for name, size, dark in (("narrow", NARROW, False), ("dark", WIDE, True),
                                 ("narrow-dark", NARROW, True)):
            with self.subTest(name):
                self.open(url, size, dark)
                self.wait_for(lambda: self.picture(CANVAS))
                self.check_problems()
                self.check_fits()
                colour = self.one("body").value_of_css_property("background-color")
                brightness = sum(int(part) for part in re.findall(r"\d+", colour)[:3])
                self.assertEqual(brightness < 200, dark, colour)
                self.shoot(name)

    def test_says_when_the_connection_is_lost_and_comes_back(self):
        self.wait_for(lambda: self.one("#state").text == "Live")
        port = self.exporter.port
        self.exporter.stop()
        self.wait_for(lambda: self.one("#state").text == "Not connected")
        self.assertIn("last readings", self.one("#alert").text)
        self.shoot("lost")
        type(self).exporter = Exporter(self.machine, port)
        self.wait_for(lambda: self.one("#state").text == "Live")
        self.assertFalse(self.one("#alert").is_displayed())
        for complaint in self.complaints():
            self.assertRegex(complaint, "ERR_(CONNECTION_REFUSED|INCOMPLETE_CHUNKED_ENCODING)")

    def test_says_when_there_is_no_device(self):
        empty = self.folder / "empty.json"
        empty.write_text("{}")
        exporter = Exporter(empty)
        self.addCleanup(exporter.stop)
        self.browser.get(exporter.url)
        self.wait_for(lambda: self.one("#state").text == "No device")
        self.assertIn("no device found", self.one("#alert").text.lower())
        self.assertTrue(self.one("#empty").is_displayed())
        self.shoot("no-device")


class Report(BrowserTest):
    def make(self, *options):
        file = self.folder / "report.html"
        done = subprocess.run([BUILD / "tools/kovactl/kovactl", "--simulate", self.machine, "report",
                               file, *options], capture_output=True, text=True)
        self.assertEqual((done.returncode, done.stdout), (1, ""))  # 1: an item failed
        self.assertIn("1 of ", done.stderr)
        return file.as_uri()

    def test_opens_from_disk_and_shows_the_same_page(self):
        url = self.make("--for", "3s", "--interval", "300ms")
        for name, size, dark in (("report", WIDE, False), ("report-narrow", NARROW, True)):
            with self.subTest(name):
                self.open(url, size, dark)
                self.wait_for(lambda: self.picture(CANVAS))
                self.check_problems()
                self.check_fits()
                self.assertIn("failed in 11 of 11 sweeps", self.one("#attention").text)
                self.assertEqual(self.one("#state").text, "Report")
                self.assertEqual(self.value(PART_NUMBER), HOSTILE)
                self.check_drawn(CANVAS)
                self.shoot(name)


if __name__ == "__main__":
    unittest.main()
