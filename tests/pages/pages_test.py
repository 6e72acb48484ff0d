"""What the pages tell of commands, endpoints, metrics and tests, against what there is."""
import json
import os
import pathlib
import re
import subprocess
import unittest

SOURCE = pathlib.Path(os.environ["KOVA_SOURCE"])


def read(page):
    return (SOURCE / page).read_text()


def manual(page):
    """A manual page without the marks of its fonts."""
    return re.sub(r"\\f.|\\(?=-)", "", read(page))


def options_of(*command):
    """The program's own help, cut into the first words of its lines by heading."""
    text = subprocess.run([os.environ["KOVACTL"], *command, "--help"], check=True,
                          capture_output=True, text=True).stdout
    return {heading: re.findall(r"^  (?:-\w,)?(\S+)", body, re.MULTILINE)
            for heading, body in re.findall(r"^(\w+):\n((?:  .*\n|\n)*)", text, re.MULTILINE)}


COMMANDS = options_of()["Subcommands"]


class Commands(unittest.TestCase):
    def test_each_that_is_written_is_there(self):
        for file in sorted((SOURCE / "tools/kovactl").glob("command_*.cpp")):
            for name in re.findall(r'\.add\(\s*\{"([a-z-]+)"', file.read_text()):
                with self.subTest(name):
                    found = subprocess.run([os.environ["KOVACTL"], name, "--help"], check=False,
                                           capture_output=True)
                    self.assertEqual(found.returncode, 0, "tools/kovactl/commands.cpp lacks it")

    def test_the_manual_has_each_with_its_options(self):
        sections = {section.split()[0]: section for section in
                    re.split(r"^\.SS ", manual("tools/kovactl/kovactl.1"), flags=re.MULTILINE)[1:]}
        self.assertEqual(set(COMMANDS), set(sections), "tools/kovactl/kovactl.1 against the program")
        for command in COMMANDS:
            told = set(re.findall(r"--[a-z-]*[a-z]", sections[command]))
            self.assertLessEqual(set(options_of(command)["Options"]) - {"--help"}, told,
                                 f"tools/kovactl/kovactl.1 lacks options of {command}")
            own = sections[command].partition("\n.SH ")[0]
            named = re.findall(r"^\.B[IR]? (--[a-z-]+)", own, re.MULTILINE)
            self.assertLessEqual(set(named), set(options_of(command)["Options"]), command)

    def test_json_has_a_contract(self):
        parts = json.loads(read("docs/json.schema.json"))
        whole = [part["$ref"].rpartition("/")[2] for part in parts["anyOf"]]
        schema = ", ".join(parts["$defs"][part]["description"].partition(":")[0] for part in whole)
        page = ", ".join(re.findall("^## .*", read("docs/json.md"), re.MULTILINE))
        for command in COMMANDS:
            has_json = "--json" in options_of(command)["Options"]
            with self.subTest(command):
                self.assertEqual(has_json, command in schema.split(", "), "docs/json.schema.json")
                self.assertEqual(has_json, f"`{command}`" in page, "headings of docs/json.md")


class Endpoints(unittest.TestCase):
    def test_pages_have_each(self):
        usage = subprocess.run([os.environ["KOVA_EXPORTER"], "--help"], check=True,
                               capture_output=True, text=True).stdout.partition("Paths:\n")[2]
        served = {path.rstrip("/") for path in re.findall(r"^  (/[a-z0-9/]+)", usage, re.MULTILINE)}
        self.assertIn("/metrics", served)
        for page, text in (("docs/exporter.md", read("docs/exporter.md")),
                           ("tools/exporter/kova-exporter.1", manual("tools/exporter/kova-exporter.1"))):
            # In the manual's section or the page's table, with what parts and parameters follow.
            told = {path.rstrip("/") for path in re.findall(
                r"^(?:\.BR?|\|) `?(/[a-z0-9/]+)", text, re.MULTILINE)}
            self.assertEqual(served, told, f"{page} against tools/exporter/site.cpp")


class Security(unittest.TestCase):
    def test_each_claim_is_held_by_something_that_there_is(self):
        tests = set()
        for file in (SOURCE / "tests").glob("**/*_test.*"):
            group = None
            for kind, name, method in re.findall(
                    r"^ *(class |TEST\w*\(|def )(\w+)(?:, (\w+))?", file.read_text(), re.MULTILINE):
                group = name if kind == "class " else group
                tests.add(f"{name}.{method}" if method else f"{group}.{name}")
        claims = re.findall(r"^\| (?!What holds)(?=\w)(.*) \|(.*)\|$", read("docs/security.md"),
                            re.MULTILINE)
        self.assertTrue(claims)
        for claim, holders in claims:
            named = re.findall("`([^`]+)`", holders)
            self.assertTrue(named, f"nothing holds: {claim}")
            for name in named:
                self.assertTrue(name in tests or (SOURCE / name).is_file(), f"{name}: {claim}")


class Metrics(unittest.TestCase):
    def test_pages_name_no_others(self):
        # The page that is made from the program's own list.
        rows = re.findall(r"^\| `(kova_\w+)` \|.*?\|(.*?)\|", read("docs/metrics.md"), re.MULTILINE)
        known = {name for name, _ in rows}
        ranged = {name for name, has_range in rows if has_range.strip() == "yes"}
        pages = [file for pattern in ("README.md", "docs/*.md", "tools/*/*.1",
                                      "tools/monitoring/prometheus/*", "tools/monitoring/grafana/*")
                 for file in SOURCE.glob(pattern)]
        for page in pages:
            for name in re.findall(r"(?<![a-z_])kova_(?:[a-z]+_)*[a-z]+(?!\.(?:h|cpp)\b|[a-z_]| ?\(\d\))",
                                   page.read_text()):
                with self.subTest(f"{name} in {page.relative_to(SOURCE)}"):
                    end = re.sub("_(?:minimum|maximum)(?=_)", "", name)
                    self.assertTrue(name in known or (end != name and end in ranged))


class Tests(unittest.TestCase):
    def test_each_has_a_time_limit(self):
        listed = subprocess.run([os.environ["KOVA_CTEST"], "--test-dir", os.environ["KOVA_BUILD"],
                                 "--show-only=json-v1"], check=True, capture_output=True).stdout
        for test in json.loads(listed)["tests"]:
            self.assertIn("TIMEOUT", [entry["name"] for entry in test.get("properties", [])],
                          f"{test['name']}: see tests/CMakeLists.txt for the functions that add tests")


if __name__ == "__main__":
    unittest.main()
