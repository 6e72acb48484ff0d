"""An agent without a module: calls whatever device library is preloaded, and prints the answers.

Usage: agent.py session SEED COUNT | hour | polls | fork | full | no_room | codes COUNT |
silent | backwards | careful | forks_meanwhile | stderr OWN_FILE |
file | writes COUNT
"""
import ctypes
import os
import random
import resource
import signal
import sys
import threading
import time

DEVICE = ctypes.CDLL("/usr/lib/libKOVADevice.so", use_errno=True)  # by its SONAME
UNTOUCHED = 0xDEAD
CODES = [*range(0x200000, 0x200002), *range(0x240000, 0x240004), *range(0x250000, 0x250004),
         *range(0x270000, 0x270004), *range(0x410000, 0x410003), 0x430001, 0x600008, 0x6A0005,
         *range(0x680000, 0x68000B), *range(0x690000, 0x69000B), *range(0x820000, 0x820007),
         *range(0x822003, 0x82200A), *range(0xA00001, 0xA0000D), 0xA00013, 0xA00109, 0xB00000,
         0xB00009, 0xB0000A, 0xB0000F, 0xB00017]


def read(code):
    value = ctypes.c_uint32(UNTOUCHED)
    status = DEVICE.KovaDeviceGetValue(code, ctypes.byref(value)) & 0xFFFFFFFF
    return status, value.value


def session(seed, count):
    """Reads and writes at random, some codes often."""
    dice = random.Random(seed)
    favourites = dice.sample(CODES, 4)
    for _ in range(int(count)):
        code = dice.choice(favourites if dice.random() < 0.5 else CODES)
        if dice.random() < 0.2:
            word = dice.choice((0, 1, 2, 11, 100, 0xFFFFFFFF))
            print("write", hex(code), word, DEVICE.KovaDeviceSetValue(code, word) & 0xFFFFFFFF)
        else:
            print("read", hex(code), *read(code))


def hour():
    """3600 samples of 100 calls; a machine clock of 10 ms a call keeps step with them."""
    codes = CODES + [0] * (100 - len(CODES))
    recorded = hasattr(DEVICE, "KovaRecorderSetTime")
    for second in range(3600):
        if recorded:
            DEVICE.KovaRecorderSetTime(ctypes.c_uint64(second * 1000))
        answers = [read(code) for code in codes]
        if second in (0, 1799, 3599):
            print(answers)
    if recorded:
        DEVICE.KovaRecorderSetTime(ctypes.c_uint64(3600000))
        print(DEVICE.KovaRecorderFinish(), file=sys.stderr)


def polls():
    print("polling", read(0x820000), flush=True)
    while True:
        read(0x820000)
        time.sleep(0.01)


def fork():
    read(0x820000)
    os.chdir("/")
    child = os.fork()
    for _ in range(2 if child else 5):
        read(0x820000)
    if child:
        print(os.getpid(), child)
        os.waitpid(child, 0)


def full():
    """No file may grow beyond 8 KiB: to a recorder that is a full disk."""
    resource.setrlimit(resource.RLIMIT_FSIZE, (8192, 8192))
    for seed, count in enumerate((50, 3000, 100)):
        session(seed, count)
        time.sleep(1.3)


def no_room():
    resource.setrlimit(resource.RLIMIT_FSIZE, (99, 99))
    read(0x820000)


def codes(count):
    print(sum(read(code)[0] != 0 for code in range(int(count))))


def silent():
    DEVICE.KovaRecorderError()


def file():
    read(0x820000)
    DEVICE.KovaRecorderFile.restype = ctypes.c_char_p
    print(DEVICE.KovaRecorderFile().decode())


def writes(count):
    """At many codes already; slow enough for the disk."""
    codes(60000)
    for i in range(int(count)):
        DEVICE.KovaDeviceSetValue(0x270000, i & 1)
        if i % 100000 == 0:
            time.sleep(1.1)


def backwards():
    """Sets the time to and fro, and ends a while after the last call."""
    for seconds in (5, 1, 9, 9, 9, 9):
        DEVICE.KovaRecorderSetTime(ctypes.c_uint64(seconds * 1000))
        print(read(0x820000))
    DEVICE.KovaRecorderSetTime(ctypes.c_uint64(90500))


def careful():
    """An agent that looks at errno, and asks without a place for the answer."""
    for _ in range(2):
        ctypes.set_errno(77)
        print(read(0x820000)[0], DEVICE.KovaDeviceSetValue(0x680000, 11), ctypes.get_errno())
    print(hex(DEVICE.KovaDeviceGetValue(0x820000, None) & 0xFFFFFFFF))


def forks_meanwhile():
    """The child calls as well, of which another thread was in the middle."""
    caller = threading.Thread(target=read, args=(0x820000,))
    caller.start()
    time.sleep(0.2)
    child = os.fork()
    if child == 0:
        signal.alarm(5)
        os._exit(read(0x820001)[0] != 0)
    print(os.waitpid(child, 0)[1])
    caller.join()


def stderr(own_file=None):
    """A broken pipe ends it, as it does any agent in C."""
    signal.signal(signal.SIGPIPE, signal.SIG_DFL)
    if own_file:
        os.dup2(os.open(own_file, os.O_WRONLY | os.O_CREAT), 2)
    read(0x820000)
    DEVICE.KovaDeviceSetValue(0x820000, 0)


globals()[sys.argv[1]](*sys.argv[2:])
