"""The same machines before the tools and before the alert rules: both say the same of each item."""
import json
import subprocess
import unittest

from engines import KOVACTL, MONITORING, EngineTest

NOW, BEFORE = 80, 60  # minutes: the alert on what is gone looks back for an hour
VTIN, FAN, POWER, TYPE, ERRORS, SOH = ("0x00820000", "0x00822003", "0x00620005", "0x00620004",
                                       "0x00B00016", "0x00B0004F")
GUARDED, CURRENT = "0x00690009", "0x00240000"
# What the device of a built-in machine answers otherwise, and the rules that see it.
MACHINES = {
    "well": ({}, set()),
    "stopped": ({FAN: 0}, {"fan-stopped"}),
    "quiet": ({f"0x0082200{code:X}": 0 for code in range(3, 10)}, set()),
    "fast": ({FAN: 9000}, {"out-of-range"}),
    "hot": ({VTIN: 3682}, {"temperature-near-maximum"}),
    "burning": ({VTIN: 3782}, {"out-of-range"}),
    "senseless": ({VTIN: 0, "0x00A00009": 0}, {"absolute-zero"}),
    "worn": ({SOH: 59, ERRORS: 0xC7}, {"battery-worn", "battery-error"}),
    "unreadable": ({FAN: {"fail_read": 5}, ERRORS: {"fail_read": 5}}, {"unreadable"}),
    "turned": ({"0x006B0000": 70000}, {"out-of-range"}),
    "low": ({POWER: 101}, {"input-below-cut-off"}),
    "near": ({POWER: 107}, {"input-near-cut-off"}),
    "unguarded": ({POWER: 101, GUARDED: 0}, set()),
    "jump": ({POWER: 240}, {"input-above-supply"}),
    "truck": ({TYPE: 2, POWER: 276}, set()),
    "low-truck": ({TYPE: 2, POWER: 219}, {"input-below-cut-off"}),
    "high-truck": ({TYPE: 2, POWER: 330}, {"input-above-supply"}),
    "typeless": ({TYPE: 0, POWER: 276}, {"battery-type-unknown", "out-of-range"}),
    "loaded": ({CURRENT: 590000}, {"port-overload"}),
    "robbed": ({"0x00B00000": None}, {"gone"}),
}


def run(machine, *arguments):
    done = subprocess.run([KOVACTL, "--simulate", machine, *arguments], capture_output=True,
                          text=True, check=False)
    return done.stdout


def series(machine, values):
    """The machine's metrics as input series, by metric and labels."""
    made = {}
    for line in run(machine, "metrics").splitlines():
        if not line.startswith("#"):
            name, _, number = line.rpartition(" ")
            metric, _, labels = name.rstrip("}").partition("{")
            labels = 'job="kova",instance="bus"' + (f",{labels}" if labels else "")
            made[f"{metric}{{{labels}}}"] = f"{number}x{values}"
    return made


def promtool_test(inputs, findings):
    return {"interval": "1m",
            "input_series": [{"series": key, "values": text} for key, text in inputs.items()],
            "promql_expr_test": [{
                "expr": 'count by (rule, severity, id) (ALERTS{alertstate="firing"})',
                "eval_time": f"{NOW}m",
                "exp_samples": [{"labels": f'{{rule="{rule}",severity="{severity}",id="{number}"}}',
                                 "value": 1} for rule, severity, number in findings]}]}


class Verdicts(EngineTest):
    def test_are_those_of_the_tools(self):
        well = self.write("well.json", {"base": "builtin"})
        listing = self.write("listing.json", run(well, "list", "--json"))
        tests = []
        for name, (codes, rules) in MACHINES.items():
            machine = self.write(f"{name}.json", {"base": "builtin", "codes": codes})
            document = json.loads(run(machine, "list", "--json", "--expect", listing))
            findings = {(finding["rule"], finding["severity"], finding["id"])
                        for finding in document["findings"]}
            self.assertEqual({rule for rule, _, _ in findings}, rules, name)
            before = series(well, BEFORE) if "gone" in rules else {}
            tests.append(promtool_test({**before, **series(machine, NOW)}, findings))
        self.write("test.yml", {
            "rule_files": [str(MONITORING / "prometheus/kova-alerts.yml")],
            "evaluation_interval": "1m", "tests": tests})
        result = subprocess.run(["promtool", "test", "rules", "test.yml"], cwd=self.folder,
                                capture_output=True, text=True, check=False)
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)


if __name__ == "__main__":
    unittest.main()
