"""Measures the tests by mutation: small faults put into the code, one at a time, have to be found.

Run by scripts/mutation.sh. Mutants are drawn at random, the same ones for the same seed. Each goes
into a copy of the tree, which is built without optimisation. The tests of its folder run first, for
all mutants in turn; those that they leave ("not found by the tests of its folder") then meet all
other tests. A mutant that does not compile is not judged. One that a program of the build itself
refuses is killed like one that a test finds, in two runs of it: the first may have failed for
a machine at its limits.
"""
import argparse
import concurrent.futures
import dataclasses
import json
import os
import pathlib
import queue
import random
import re
import resource
import shutil
import signal
import subprocess
import sys
import threading
import time

from mutants import mutants_of

REPOSITORY = pathlib.Path(__file__).resolve().parents[2]
FOLDERS = ["module", "framework", "devices", "simulator", "tools"]
# The folders of tests/ whose tests are the first to run for a folder of code, in this order. Others:
# its own name.
OWN_TESTS = {"module": [".", "faults"], "framework": [".", "faults"], "devices": [".", "faults"],
             "simulator": ["simulator", "recorder"], "host": ["host", "kovactl"]}
# What the other tests in a folder of tests/ need to be built. Those of other folders: everything.
TARGETS = {"items": ["kova_items", "metrics_document"], "kovactl": ["kovactl_test"],
           "exporter": ["exporter_test"],
           "recorder": ["kovactl", "KovaIoT", "KOVADeviceRecorder", "KOVADeviceSim",
                        "kova_calling_library", "kova_slow_disk", "kova_threads_agent"]}
BUILD_LIMIT = 600  # seconds, for one mutant
TEST_LIMIT = 300  # seconds, for one test program on the code as it is
MEMORY_LIMIT = 4 << 30


def bounded():
    """What a test finds: limits, and signals as a terminal gives them, also when in the background."""
    for number in (signal.SIGINT, signal.SIGHUP):  # without the second, watches outlive their tests
        signal.signal(number, signal.SIG_DFL)
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY_LIMIT, MEMORY_LIMIT))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def run(command, limit, **options):
    """Runs a command with all its children; gives its exit code, None after the limit, and output."""
    process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                               stderr=subprocess.STDOUT, start_new_session=True, **options)
    try:
        output, _ = process.communicate(timeout=limit)
        return process.returncode, output.decode(errors="replace")
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, signal.SIGKILL)
        process.communicate()
        return None, ""


@dataclasses.dataclass
class Program:
    """One test program: all tests of a GoogleTest executable, or one other test of ctest."""
    name: str
    command: list
    folder: str  # below tests/
    environment: dict
    targets: list  # what to build for it
    place: str
    seconds: float = 0.0


class Tree:
    """A copy of the project with a build of its own."""
    def __init__(self, folder):
        self.folder, self.build = folder, folder / "build"

    def refresh(self):
        """Makes the copy the working tree, and leaves what has not changed as it is."""
        listed = subprocess.run(["git", "ls-files", "-z", "--cached", "--others",
                                 "--exclude-standard"], cwd=REPOSITORY, check=True,
                                capture_output=True).stdout.decode().split("\0")
        wanted = {name for name in listed if name and (REPOSITORY / name).is_file()}
        for old in list(self.folder.rglob("*")):
            name = old.relative_to(self.folder).as_posix()
            if old.is_file() and name.split("/")[0] != "build" and name not in wanted:
                old.unlink()
        for name in wanted:
            source, copy = REPOSITORY / name, self.folder / name
            if not copy.exists() or copy.read_bytes() != source.read_bytes():
                copy.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(source, copy)

    def configure(self):
        launcher = [f"-DCMAKE_{language}_COMPILER_LAUNCHER=ccache" for language in ("C", "CXX")]
        run_or_stop(["cmake", "-S", self.folder, "-B", self.build, "-G", "Ninja",
                     "-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_C_FLAGS=-O0 -g0 -w",
                     "-DCMAKE_CXX_FLAGS=-O0 -g0 -w", "-DCMAKE_C_FLAGS_DEBUG=",
                     "-DCMAKE_CXX_FLAGS_DEBUG=", "-DCMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE=PRE_TEST",
                     *(launcher if shutil.which("ccache") else [])])

    def make(self, targets, jobs=1):
        environment = {**os.environ, "CCACHE_BASEDIR": str(self.folder)}
        return run(["ninja", "-C", self.build, "-j", str(jobs), *targets], BUILD_LIMIT,
                   env=environment)

    def programs(self):
        """The test programs of the built tree, as ctest knows them."""
        listed = json.loads(run_or_stop(["ctest", "--test-dir", self.build,
                                         "--show-only=json-v1"]))
        found = {}
        for test in listed["tests"]:
            command = test["command"]
            properties = {entry["name"]: entry["value"] for entry in test.get("properties", [])}
            google = len(command) > 1 and command[1].startswith("--gtest_filter")
            place = properties.get("WORKING_DIRECTORY", str(self.build))
            name = command[0] if google else test["name"]
            if name in found:
                continue
            folder = os.path.relpath(os.path.dirname(command[0]) if google else place,
                                     self.build / "tests")
            found[name] = Program(
                os.path.relpath(name, self.build) if google else name,
                [command[0], "--gtest_brief=1", "--gtest_fail_fast"] if google else command,
                folder, dict(entry.split("=", 1) for entry in properties.get("ENVIRONMENT", [])),
                [os.path.relpath(command[0], self.build)] if google
                else TARGETS.get(folder, ["all"]), place)
        return list(found.values())

    def failure(self, program, limit, tests=()):
        """The output of a program whose tests, or these, do not pass within so many seconds."""
        command = program.command + ([f"--gtest_filter={':'.join(tests)}"] if tests else [])
        code, output = run(command, limit, cwd=program.place, preexec_fn=bounded,
                           env={**os.environ, **program.environment})
        return None if code == 0 else output

    def finds(self, program, limit):
        """Whether a program's tests fail, and those that did once more."""
        output = self.failure(program, limit)
        if output is None:
            return False
        failed = re.findall(r"^\[  FAILED  \] ([\w./]+)", output, re.MULTILINE)
        return self.failure(program, limit, failed) is not None


def run_or_stop(command):
    code, output = run([str(word) for word in command], None)
    if code != 0:
        sys.exit(f"mutation.py: failed: {' '.join(map(str, command))}\n{output}")
    return output


def prepared_tree(folder, jobs):
    tree = Tree(folder)
    tree.refresh()
    tree.configure()
    code, output = tree.make(["all"], jobs)
    if code != 0:
        sys.exit(f"mutation.py: the tree does not build\n{output}")
    return tree


def measure(trees, programs, names):
    """Sees in the first tree how long each of the named programs takes on the code as it is."""
    for tree in trees:
        tree.make(["all"])
    first = trees[0]
    for number, program in enumerate(programs[first]):
        if program.name not in names:
            continue
        start = time.monotonic()
        output = first.failure(program, TEST_LIMIT)
        if output is not None:
            sys.exit(f"mutation.py: {program.name} fails without any mutant\n{output}")
        for tree in trees:
            programs[tree][number].seconds = time.monotonic() - start


def split(programs, path):
    """Programs of the mutant's own folder, and the others; the quick before the slow."""
    parts = path.split("/")
    folder = parts[1] if parts[0] == "tools" or parts[:2] == ["module", "items"] else parts[0]
    own = OWN_TESTS.get(folder, [folder])
    in_order = sorted(programs, key=lambda program: (
        "all" in program.targets, program.folder in own and own.index(program.folder),
        program.seconds))
    return ([program for program in in_order if program.folder in own],
            [program for program in in_order if program.folder not in own])


def failed_to_compile(output):
    """Whether a build failed for the code, and not for a program that the build runs."""
    failed = re.findall(r"^FAILED: (.*)$", output, re.MULTILINE)
    return any(re.search(r"\.(o|so|a)\b", name) or "." not in os.path.basename(name.split()[0])
               for name in failed)


def judge(tree, programs, mutant):
    """What these programs make of a mutant: "not compiled", "killed by ..." or None."""
    file = tree.folder / mutant.path
    original = file.read_text()
    file.write_text(mutant.apply(original))
    try:
        for program in programs:
            code, output = tree.make(program.targets)
            if code is None:
                return "killed by the build, out of time"
            if code != 0:
                return "not compiled" if failed_to_compile(output) else "killed by the build"
            if tree.finds(program, 5 + 10 * program.seconds):
                return f"killed by {program.name}"
        return None
    finally:
        file.write_text(original)


def drawn(folders, number, seed):
    places = [(name, line) for name, _, line in (folder.partition(":") for folder in folders)]
    files, mutants = set(), []
    for place, line in places:
        for name in run_or_stop(["git", "-C", REPOSITORY, "ls-files", "--", place]).split():
            if name.endswith((".c", ".cpp", ".h")):
                files.add(name)
                mutants += [mutant for mutant in mutants_of(name, (REPOSITORY / name).read_text())
                            if line in ("", str(mutant.line))]
    if not mutants:
        sys.exit(f"mutation.py: there is no code in {' '.join(folders)}")
    chosen = random.Random(seed).sample(mutants, min(number or len(mutants), len(mutants)))
    print(f"{len(chosen)} of {len(mutants)} mutants in {len(files)} files of {' '.join(folders)}, "
          f"seed {seed}", flush=True)
    return chosen


def judge_all(mutants, options):
    """Judges mutants in as many trees as there are jobs; gives them with their verdicts."""
    place = REPOSITORY / "build" / "mutation"
    trees = [prepared_tree(place / str(job), os.cpu_count() or 1) for job in range(options.jobs)]
    programs = {tree: tree.programs() for tree in trees}
    idle = queue.SimpleQueue()
    for tree in trees:
        idle.put(tree)
    verdicts, lock = {}, threading.Lock()

    def work(mutant, stage, otherwise):
        tree = idle.get()
        try:
            chosen = split(programs[tree], mutant.path)[stage]
            verdict = judge(tree, chosen, mutant) or otherwise
        finally:
            idle.put(tree)
        with lock:
            verdicts[mutant] = verdict
            print(f"[{len(verdicts)}/{len(mutants)}] {mutant}: {verdict}", flush=True)

    left = mutants
    for stage, otherwise in enumerate(["not found by the tests of its folder", "survived"]):
        names = {program.name for mutant in left
                 for program in split(programs[trees[0]], mutant.path)[stage]}
        measure(trees, programs, names)
        with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
            for future in [pool.submit(work, mutant, stage, otherwise) for mutant in left]:
                future.result()
        left = [mutant for mutant in left if verdicts[mutant] == otherwise]
    return verdicts


def main():
    def positive(text):
        if (number := int(text)) < 1:
            raise argparse.ArgumentTypeError(f"{text} is not positive")
        return number

    parser = argparse.ArgumentParser(prog="scripts/mutation.sh", description=__doc__)
    parser.add_argument("folders", nargs="*", default=FOLDERS, metavar="FOLDER",
                        help=f"folders, files or FILE:LINE of code (default: {' '.join(FOLDERS)})")
    parser.add_argument("--sample", type=positive, default=200, metavar="N",
                        help="how many mutants to judge (default: 200)")
    parser.add_argument("--all", action="store_true", help="judge every mutant")
    parser.add_argument("--seed", type=int, default=1, help="of the random choice (default: 1)")
    parser.add_argument("--jobs", type=positive, default=1, help="trees at work (default: 1)")
    parser.add_argument("--at-least", type=float, default=0, metavar="PERCENT",
                        help="exit with 1 when fewer of the judged mutants are killed")
    options = parser.parse_args()

    mutants = drawn(options.folders, None if options.all else options.sample, options.seed)
    verdicts = judge_all(mutants, options)
    survivors = sorted(mutant for mutant, verdict in verdicts.items() if verdict == "survived")
    judged = sum(verdict != "not compiled" for verdict in verdicts.values())
    if judged == 0:
        sys.exit("mutation.py: no mutant compiles")
    score = 100 * (judged - len(survivors)) / judged
    print(f"\n{judged - len(survivors)} of {judged} judged mutants killed: {score:.1f} %; "
          f"{len(verdicts) - judged} did not compile")
    for survivor in survivors:
        print(f"survived: {survivor}")
    if score < options.at_least:
        sys.exit(1)


if __name__ == "__main__":
    main()
