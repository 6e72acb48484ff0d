"""What Python tests know of items: items.json, and a machine that answers for all of them.

A new item that simulator/machines/default.json does not answer fails one test, which names it
(BuiltInMachine.AnswersForEveryItem). Here it is answered, so that no other test fails for it.
"""
import atexit
import functools
import json
import os
import pathlib
import subprocess
import tempfile

FAMILIES = json.loads(pathlib.Path(os.environ["KOVA_ITEMS"]).read_text())["families"]
PRESENCE = {family["name"]: f"{family['presence']['code']:#010x}" for family in FAMILIES}


def all_codes():
    """The codes of each item of each instance, by its ID."""
    found = {}
    for family in FAMILIES:
        steps = {"max": 1, "id_step": 0, "code_step": 0, **family.get("instances", {})}
        for package in family["packages"]:
            for item in package["items"]:
                for n in range(steps["max"]):
                    found[item["id"] + n * steps["id_step"]] = [
                        f"{code + n * steps['code_step']:#010x}" for code in item["codes"]]
    return found


def told(*arguments):
    done = subprocess.run([os.environ["KOVACTL"], "--simulate", *arguments], check=False,
                          stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    return json.loads(done.stdout)


CODES = all_codes()
# What the built-in machine lacks, and what `--simulate` and a description build on.
LISTED = told("list", "--json")["items"]
LACKING = {code: 1 for item in LISTED if not item["ok"] for code in CODES[int(item["id"], 16)]}
for absent in FAMILIES:
    if absent["name"] not in {item["family"] for item in LISTED}:
        LACKING[PRESENCE[absent["name"]]] = 1
        LACKING |= {code: 1 for package in absent["packages"] for item in package["items"]
                    for code in CODES[item["id"]]}
BASE = "builtin"
if LACKING:
    with tempfile.NamedTemporaryFile("w", suffix=".json", delete=False) as complete:
        json.dump({"base": "builtin", "codes": LACKING}, complete)
    BASE = os.environ["KOVA_SIM_MACHINE"] = complete.name
    atexit.register(os.unlink, complete.name)


document = functools.cache(lambda: told("capability"))


def item_count(*path):
    """How many items that machine's document has, or one of its families, or of their packages."""
    def ids(part):
        if isinstance(part, list):
            return {element["id"] for element in part}
        return set().union(*map(ids, part.values())) if isinstance(part, dict) else set()
    return len(ids(functools.reduce(dict.get, path, document())))
