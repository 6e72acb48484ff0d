"""What Python tests know of items: items.json, and a machine that answers for all of them.

A new item that simulator/machines/default.json does not answer fails one test, which names it
(kovactl.BuiltInMachine.test_answers_for_every_item). Here it is answered, so that no other test fails for it.
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


def told(*arguments):
    done = subprocess.run([os.environ["KOVACTL"], "--simulate", *arguments], check=False,
                          stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    return json.loads(done.stdout)


def codes_of(item_id):
    """The codes of an item, by its ID."""
    for family in FAMILIES:
        rule = {"max": 1, "id_step": 1, "code_step": 0, **family.get("instances", {})}
        for item in (item for package in family["packages"] for item in package["items"]):
            n, rest = divmod(item_id - item["id"], rule["id_step"])
            if rest == 0 and 0 <= n < rule["max"]:
                return [f"{code + n * rule['code_step']:#010x}" for code in item["codes"]]
    raise KeyError(item_id)


def lacking():
    """Codes that the built-in machine does not answer, with the items that they are for."""
    listed = told("list", "--json")["items"]
    present = {item["family"] for item in listed}
    found = {code: item["path"] for item in listed if not item["ok"]
             for code in codes_of(int(item["id"], 16))}
    for family in FAMILIES:
        if family["name"] not in present:
            found[PRESENCE[family["name"]]] = f"{family['name']}'s presence"
            found |= {code: f"{family['name']}/{package['name']}/{item['name']}"
                      for package in family["packages"] for item in package["items"]
                      for code in codes_of(item["id"])}
    return found


LACKING = lacking()
BASE = "builtin"  # what `--simulate` and the tests' descriptions build on
if LACKING:
    with tempfile.NamedTemporaryFile("w", suffix=".json", delete=False) as complete:
        json.dump({"base": "builtin", "codes": dict.fromkeys(LACKING, 1)}, complete)
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
