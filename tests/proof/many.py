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


def run_many(usage, subject, more=None, set_up=None):
    """`subject` is made of the programs, a folder and a random.Random, and has once(), counts and terminal. An
    exception ends all; a text that once() returns is told, and the others go on.
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
        one.counts = {}
        try:
            one.__init__(options.programs, folder, random.Random(f"{options.seed}/{number}"))
            while not found:
                with lock:
                    if left[0] == 0 or time.monotonic() - began > options.seconds:
                        break
                    left[0] -= 1
                if told := one.once():
                    contradictions.append(told)
        except Exception as failure:  # whatever it is, it is told
            found.append(f"terminal {number}: {type(failure).__name__}: {failure}; all of it is in {folder}")
        finally:
            counts.update(one.counts)
            if hasattr(one, "terminal"):
                one.terminal.sweep()
            if not any(folder in line for line in found):
                shutil.rmtree(folder, ignore_errors=True)

    threads = [threading.Thread(target=run, args=(number,)) for number in range(options.terminals)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    print(f"{time.monotonic() - began:.0f} s; " + ", ".join(f"{count} {what}" for what, count in sorted(counts.items())))
    for line in contradictions + found:
        print(f"contradiction with seed {options.seed}: {line}")
    sys.exit(1 if contradictions or found else 0)
