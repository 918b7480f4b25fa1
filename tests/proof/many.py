"""Runs a proof on several terminals at once, most of whose time is waiting, and tells what came of it."""

import argparse
import collections
import pathlib
import random
import shutil
import sys
import tempfile
import threading
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "support"))  # where a proof finds the terminal
from terminal import Terminal  # noqa: E402

READERS = {"1d": "label A ", "imager": "label 1 ", "laser": "label 1 "}  # and how each is shown a label


class Subject:
    """A terminal with an RFID reader and one of these barcode readers, and the count of what was tried on it."""
    readers = tuple(READERS)
    over = False  # nothing is left to try

    def __init__(self, programs, folder, chance, settings=None, **environment):
        self.random, self.counts, self.number = chance, collections.Counter(), 0
        self.terminal = Terminal(programs, folder, **environment)
        self.reader = chance.choice(self.readers)
        self.present = READERS[self.reader]
        self.terminal.write_settings(settings)
        self.terminal.start_readers("--quiet", "--barcode", self.reader, "--rfid", "100")

    def count(self, what):
        self.counts[what] += 1


def run_many(usage, subject, more=None, set_up=None):
    """`subject` is a Subject with once(). An exception ends all; a text that once() returns is told, and the others go on.
    `more` are options of its own (whether each is required), which `set_up` gets with the others."""
    parser = argparse.ArgumentParser(description=usage, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("programs")
    parser.add_argument("count", type=int)
    parser.add_argument("--seed", type=int, default=int(time.strftime("%Y%m%d")))
    parser.add_argument("--terminals", type=int, default=4)
    parser.add_argument("--seconds", type=float, default=float("inf"), help="no new ones after so long")
    for name, required in (more or {}).items():
        parser.add_argument(name, required=required)
    options = parser.parse_args()
    if set_up:
        set_up(options)
    print(f"seed {options.seed}, {options.terminals} terminals", flush=True)
    left = [options.count]
    found, contradictions, counts, lock = [], [], collections.Counter(), threading.Lock()
    began = time.monotonic()

    def run(number):
        folder = tempfile.mkdtemp(prefix="vantrel-proof-")
        one = subject.__new__(subject)  # what it has started goes even when it cannot be made
        try:
            one.__init__(options.programs, folder, random.Random(f"{options.seed}/{number}"))
            while not found and not one.over:
                with lock:
                    if left[0] == 0 or time.monotonic() - began > options.seconds:
                        break
                    left[0] -= 1
                if told := one.once():
                    contradictions.append(told)
                    print(f"contradiction with seed {options.seed}: {told}", flush=True)
        except Exception as failure:  # whatever it is, it is told
            found.append(f"terminal {number}: {type(failure).__name__}: {failure}; all of it is in {folder}")
        finally:
            if hasattr(one, "terminal"):
                counts.update(one.counts)
                one.terminal.sweep()
            if not any(folder in line for line in found):
                shutil.rmtree(folder, ignore_errors=True)

    threads = [threading.Thread(target=run, args=(number,)) for number in range(options.terminals)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    print(f"{time.monotonic() - began:.0f} s; " + ", ".join(f"{count} {what}" for what, count in sorted(counts.items())))
    for line in found:
        print(f"contradiction with seed {options.seed}: {line}")
    sys.exit(1 if contradictions or found else 0)
