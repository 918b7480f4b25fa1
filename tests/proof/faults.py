"""Lets one call after the other fail under the real program: start, label, tag, end.

  faults.py PROGRAMS COUNT --shim FILE [--calls NAME,NAME...] [--seed N] [--terminals N]

COUNT runs with a call and a number by chance; 0 goes through all of them in order: n = 1, 2, 3 ... of each call up to
what a whole run meets. Malloc, which is met tens of thousands of times, is in every 97th of its calls only.

After each: no signal ended the program and nothing hangs; the settings file is the old or the new one; what was typed
was presented, once and in order; no key is down and the vibrator is off; a program that does not do its work says why
on standard error; the next start works.
"""

import pathlib
import re
import signal
import struct
import time

from many import run_many
from terminal import ERROR, Failure, Terminal, settings_file, wait_for

HERE = pathlib.Path(__file__).resolve().parent
CALLS = re.findall(r'"(\w+)"', re.search(r"Names\[\] = \{(.*?)\}", (HERE / "faults.c").read_text(), re.S)[1])
READERS = {"1d": "label A", "laser": "label 1", "imager": "label 1"}
OLD = bytearray(settings_file())
struct.pack_into("<HH", OLD, 760 + 2 * 3, ord("1"), 1)  # the vibrator, for half a second
READY_WITHIN, END_WITHIN, PRESSES = 40, 20, 3


class Patient:
    plan = None  # of all terminals: the calls that are to fail, in order
    shim = None
    calls = CALLS

    def __init__(self, programs, folder, chance):
        self.random, self.counts, self.number = chance, {}, 0
        self.terminal = Terminal(programs, folder)
        self.reader = chance.choice(sorted(READERS))
        self.calls_file = self.terminal.folder / "calls"
        self.words_file = self.terminal.folder / "standard-error"
        self.terminal.write_settings(OLD)
        self.terminal.start_readers("--quiet", "--barcode", self.reader, "--rfid", "100")
        self.new, self.usual = None, set()
        for _ in range(2):  # the first start sets the readers up
            told = self.run(None, 0)
            if told:
                raise Failure("without any fault: " + told)
            self.new = self.terminal.settings.read_bytes()
            self.usual |= self.words()
        met = struct.unpack(f"{len(CALLS)}Q", self.calls_file.read_bytes())
        self.met = dict(zip(CALLS, met))

    def count(self, what):
        self.counts[what] = self.counts.get(what, 0) + 1

    def words(self):
        """What the program said, without what it always says."""
        return {re.sub(r"\d+", "N", line) for line in self.words_file.read_text().splitlines()} - self.usual

    def press(self, present, wanted):
        """Presses until it is typed, like a user; each press has its own text."""
        for attempt in range(PRESSES):
            text = wanted(attempt)
            self.presented.append(text)
            if self.terminal.scan(present + text, text, 5):
                self.count("presses after the first") if attempt else None
                return True
            if self.terminal.system.poll() is not None or self.terminal.flags() & ERROR:
                return False
        return False

    def run(self, call, number):
        """One run; what is wrong with it, or None."""
        terminal = self.terminal
        terminal.write_settings(OLD)
        terminal.keys.unlink(missing_ok=True)
        self.calls_file.write_bytes(bytes(8 * len(CALLS)))
        self.number += 1
        self.presented = []
        terminal.tell("clear")
        terminal.tell("untag")
        fault = {"LD_PRELOAD": str(self.shim), "FAULT_FILE": str(self.calls_file)}
        if call:
            fault |= {"FAULT_CALL": call, "FAULT_N": str(number)}
        with open(self.words_file, "w", encoding="utf-8") as words:
            terminal.start_system(environment=fault, stderr=words)
        problems = self.use() + self.look(call)
        return f"{call} {number} with the {self.reader}: " + "; ".join(problems) if problems else None

    def use(self):
        """Start, label, tag, end; what is wrong with it."""
        terminal = self.terminal
        self.done = False
        try:
            wait_for("readiness", lambda: terminal.system.poll() is not None or terminal.ready()
                     or terminal.flags() & ERROR, READY_WITHIN, 0.1)
        except Failure:
            pass
        if terminal.system.poll() is None and terminal.ready():
            self.done = (self.press(READERS[self.reader] + " ", lambda n: f"FAULT{self.number}X{n}")
                         and self.press("tag I ", lambda n: f"E007{self.number:08X}{n:04X}"))
        if terminal.system.poll() is None:
            time.sleep(0.6)  # the vibrator's
            terminal.system.send_signal(signal.SIGTERM)
            try:
                wait_for("the end", lambda: terminal.system.poll() is not None, END_WITHIN)
            except Failure:
                terminal.system.kill()
                terminal.system.wait()
                return ["does not end"]
        return []

    def look(self, call):
        terminal, problems = self.terminal, []
        code = terminal.system.returncode
        words = self.words()
        said = " ".join(sorted(words)) or "says nothing"
        if code == -signal.SIGABRT and call == "malloc" and "bad_alloc" in said:
            self.count("runs ended by the lack of memory, and said so")
        elif code < 0 and code != -signal.SIGKILL:
            problems.append(f"ended by signal {-code}: {said}")
        if not self.done and not words:
            problems.append(f"did not do its work (exit code {code}) and said nothing")
        content = terminal.settings.read_bytes()
        if content != OLD and self.new not in (None, content):
            if "has gone" in said and len(content) == len(OLD):
                self.count("starts without a reader whose line broke, and said so")
            else:
                problems.append(f"another settings file ({len(content)} bytes): {said}")
        typed = iter(self.presented)
        lines = terminal.typed()
        if not all(line in typed for line in lines):
            problems.append(f"typed {lines}, presented {self.presented}")
        down = set()
        for key, way in terminal.key_events():
            (down.add if way == "down" else down.discard)(key)
        if down and code != -signal.SIGABRT:
            problems.append(f"keys left down: {down}")
        vibrator = terminal.home / "VIBRATOR"
        if code >= 0 and vibrator.exists() and vibrator.read_text()[:1] not in ("", "0"):
            problems.append("the vibrator is left on")
        if call:
            self.count(f"{call} failures")
            self.count("runs that did all their work" if self.done else "runs that told of a failure")
        if call and (problems or not self.done):
            problems += self.next_start()
        return problems

    def next_start(self):
        self.count("next starts")
        self.presented = []
        self.terminal.start_system(stderr=open(self.terminal.folder / "next-standard-error", "w", encoding="utf-8"))
        problems = self.use()
        return problems if self.done or problems else ["the next start does not work"]

    def once(self):
        if self.plan is None:
            call = self.random.choice([name for name in self.calls if self.met[name]])
            return self.run(call, self.random.randint(1, self.met[call]))
        call, number = next(self.plan, (None, 0))
        return self.run(call, number) if call and number <= self.met[call] + 20 else None


def all_of(calls):
    for call in calls:
        most = 60000 if call == "malloc" else 3000
        yield from ((call, number) for number in range(1, most, 97 if call == "malloc" else 1))


def set_up(options):
    Patient.shim = pathlib.Path(options.shim).resolve()
    if options.calls:
        Patient.calls = options.calls.split(",")
    if options.count == 0:
        # A list, which several threads may take from; what is beyond what a run meets costs nothing.
        everything = list(all_of(Patient.calls))
        Patient.plan = iter(everything)
        options.count = len(everything)


if __name__ == "__main__":
    run_many(__doc__, Patient, {"--shim": True, "--calls": False}, set_up)
