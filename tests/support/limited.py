"""Runs a Python test file, and ends a test that takes too long: it tells where it was, subtest and
all, and gives back what it holds. ctest, whose limit is later, tells the test's name only.

Usage: limited.py SECONDS FILE ARGUMENT...
"""
import faulthandler
import pathlib
import runpy
import signal
import sys
import unittest


def running_test(frame):
    while frame and not isinstance(frame.f_locals.get("self"), unittest.TestCase):
        frame = frame.f_back
    return frame and frame.f_locals["self"]


class OutOfTime(KeyboardInterrupt):
    """Which unittest does not take for a failure that the next subtest may follow."""


def out_of_time(_, frame):
    faulthandler.dump_traceback_later(10, exit=True)  # if what was started does not end
    test = running_test(frame)
    if test:
        test.doCleanups()
    # unittest has no public name for the subtest that runs.
    raise OutOfTime(f"not done within the time limit: {getattr(test, '_subtest', None) or test}")


def main():
    seconds, file = int(sys.argv[1]), sys.argv[2]
    del sys.argv[:2]
    sys.path.insert(0, str(pathlib.Path(file).parent))  # before the folder of what tests share
    signal.signal(signal.SIGALRM, out_of_time)
    signal.alarm(seconds)
    runpy.run_path(file, run_name="__main__")


main()
