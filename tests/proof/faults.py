#!/usr/bin/env python3
"""Lets one call after the other fail under the real program: start, label, tag, settings OK, end.

  faults.py PROGRAMS COUNT --shim FILE [--screen x] [--calls NAME,NAME...] [--each N] [--seed N] [--terminals N]

With a screen each terminal has an X server, where the program types into an xterm and shows the settings, in which a
switch is tapped and OK pressed by keys; without one there is no window, and another program changes the settings.

COUNT runs with a call by chance; 0 goes through all of them in the order in which a run meets them. A run has tens of
thousands of calls, most of them from the same places: of each call and stack (the program's own frames and the caller)
the first N fail, three if nothing else is said, and one of malloc.

After each: no signal ended the program and nothing hangs; the settings file is the old or the new one; what was typed
was presented, once and in order; no key is down and the vibrator is off; a program that ends leaves no socket, lock or
shared name behind; one that does not do its work says why on standard error; the next start works. What contradicts is
tried once more, by itself: a machine that was too slow for a moment is no find, and is told apart.
"""

import collections
import ctypes
import fcntl
import os
import pathlib
import re
import signal
import struct
import subprocess
import time

from many import Subject, run_many
from screen import Screen
from terminal import ERROR, INITIALIZED, RFID_READING, SETTINGS_OPEN, Failure, settings_file, wait_for

HERE = pathlib.Path(__file__).resolve().parent
CALLS = re.findall(r'"(\w+)"', re.search(r"Names\[\] = \{(.*?)\}", (HERE / "faults.c").read_text(), re.S)[1])
STACKS = 1 << 15  # the most that a run may have
OLD = bytearray(settings_file())
struct.pack_into("<HH", OLD, 760 + 2 * 3, ord("1"), 1)  # the vibrator, for half a second
READY_WITHIN, END_WITHIN, TYPED_WITHIN, PRESSES = 60, 30, 10, 3
OPEN_SETTINGS = 1028
LIBRARY = ctypes.CDLL(None, use_errno=True)


class Patient(Subject):
    tried = None  # by all terminals that go through all: calls, their stacks, which of them
    each = 3
    shim = None
    with_screen = False
    calls = CALLS

    def __init__(self, programs, folder, chance):
        super().__init__(programs, folder, chance, OLD)
        self.screen = Screen(self.terminal) if self.with_screen else None
        self.calls_file = self.terminal.folder / "calls"
        self.words_file = self.terminal.folder / "standard-error"
        self.known, self.usual = [OLD], set()  # what the file may be, what is always said
        for _ in range(2):  # the first start sets the readers up
            if told := self.run():
                raise Failure("without any fault: " + told)
            self.known += [self.after_start, self.terminal.settings.read_bytes()]
            self.usual |= self.words()
        met = collections.Counter()
        for call, _, count in self.stacks:
            met[call] += count
        told = (f"{count} {call} from {sum(call == name for name, _, _ in self.stacks)}" for call, count in met.items())
        print(f"a run with the {self.reader} has " + ", ".join(told) + " stacks", flush=True)

    def read_calls(self):
        """How many calls failed; what was met, in order: call, stack, how often."""
        failed, *words = struct.unpack(f"{1 + 2 * STACKS}Q", self.calls_file.read_bytes())
        return failed, [(CALLS[stack & 31], stack, met) for stack, met in zip(words[::2], words[1::2]) if stack]

    def words(self):
        """What the program said, without what it always says."""
        return {re.sub(r"\d+", "N", line) for line in self.words_file.read_text().splitlines()} - self.usual

    def lacked_memory(self):
        """Whether the program ended for want of memory and said so: in our own code that is an exception's name; in a
        library's also the crash, if a frame of that library comes before any of ours."""
        words = self.words_file.read_text()
        frames = [path for path in re.findall(r"^(/\S+?)\(", words, re.M) if not re.search(r"/lib(c|stdc\+\+)\.so", path)]
        return re.search("bad_alloc|allocate|out of memory", words) or (frames and not frames[0].endswith("/vantrel"))

    def typed(self):
        return self.screen.typed() if self.screen else self.terminal.typed()

    def running(self):
        return self.terminal.system.poll() is None

    def await_running(self, condition, seconds):
        """Whether it came true while the program ran."""
        try:
            wait_for("it", lambda: condition() or not self.running(), seconds, 0.05)
        except Failure:
            return False
        return self.running()

    def await_idle_rfid(self):
        """A press for a label searches for a tag as well, longer than the label takes; a change waits for its end."""
        self.await_running(lambda: self.terminal.flags() & (INITIALIZED | RFID_READING) == INITIALIZED, 10)

    def press(self, present, wanted):
        """Presses until it is typed, like a user; each press has its own text."""
        for attempt in range(PRESSES):
            self.await_idle_rfid()
            text = wanted(attempt)
            self.presented.append(text)
            self.terminal.tell(present + text)
            self.terminal.trigger("down")
            came = self.await_running(lambda text=text: text in self.typed(), TYPED_WITHIN)
            self.terminal.trigger("up")
            if came:
                self.count("presses after the first") if attempt else None
                return True
            if not self.running() or self.terminal.flags() & ERROR:
                return False
        return False

    def change_settings(self):
        """By keys in the sheet, or by another program; whether they were applied."""
        self.await_idle_rfid()
        if self.screen:
            self.terminal.ask(message=OPEN_SETTINGS)
            if not self.await_running(lambda: self.terminal.flags() & SETTINGS_OPEN, 20):
                return False
            time.sleep(0.5)  # the sheet takes the focus
            self.screen.press("Tab", "Control")  # the other page, its second group, that group's first switch
            for key in ("Home", "Down", "Right", "Down", "space", "Tab", "Tab", "Return"):
                time.sleep(0.1)
                self.screen.press(key)
            closed = self.await_running(lambda: not self.terminal.flags() & SETTINGS_OPEN, 10)
            self.screen.bring_to_front()
        else:
            asked = subprocess.run([str(self.terminal.programs / "vantrel-settings"), "set", "GoodReadBeep=Sound 3"],
                                   env=self.terminal.environment, capture_output=True, text=True, check=False,
                                   timeout=60)
            closed = asked.returncode == 0
            self.answered = asked.stderr  # who asked is told what came of it
        return closed and self.await_running(self.terminal.ready, 20)

    def run(self, call=None, stack=0, number=0):
        """One run; what is wrong with it, or None."""
        terminal = self.terminal
        terminal.write_settings(OLD)
        self.calls_file.write_bytes(bytes(8 + 16 * STACKS))
        fault = {"LD_PRELOAD": str(self.shim), "FAULT_FILE": str(self.calls_file)}
        if call:
            fault |= {"FAULT_CALL": call, "FAULT_STACK": str(stack), "FAULT_N": str(number)}
        problems = self.use(fault, self.words_file) + self.look(call)
        if not call:
            self.stacks = self.read_calls()[1]
        return f"{call} {stack} {number} with the {self.reader}: " + "; ".join(problems) if problems else None

    def use(self, environment, words_file):
        """Start, label, tag, settings, end; what is wrong with it."""
        terminal = self.terminal
        terminal.forget_keys()
        if self.screen:
            self.screen.clear()
            self.screen.bring_to_front()
        self.number += 1
        self.presented, self.done, self.answered = [], False, ""
        terminal.tell("clear")
        terminal.tell("untag")
        with open(words_file, "w", encoding="utf-8") as words:
            terminal.start_system(environment=environment, stderr=words)
        self.await_running(lambda: terminal.ready() or terminal.flags() & ERROR, READY_WITHIN)
        self.after_start = terminal.settings.read_bytes()
        if self.running() and terminal.ready():
            self.done = (self.press(self.present, lambda n: f"FAULT{self.number}X{n}")
                         and self.press("tag I ", lambda n: f"E007{self.number:08X}{n:04X}")
                         and self.change_settings())
        if self.running():
            time.sleep(0.6)  # the vibrator's
            terminal.system.send_signal(signal.SIGTERM)
            try:
                wait_for("the end", lambda: not self.running(), END_WITHIN)
            except Failure:
                terminal.system.kill()
                terminal.system.wait()
                return ["does not end"]
        return []

    def left_behind(self):
        """What the program should have taken with it."""
        home = self.terminal.home
        found = [str(path) for path in (home / "windows").iterdir() if path.is_socket()]
        noted = home / "shared-objects"
        for line in noted.read_text().splitlines() if noted.exists() else []:
            kind, name = line.split()
            if kind == "event" and pathlib.Path("/dev/shm/sem." + name.lstrip("/")).exists():
                found.append(line)
            if kind == "queue" and LIBRARY.mq_open(name.encode(), os.O_RDONLY) >= 0:
                found.append(line)
        for path in (home / "Vantrel.lock", home / "DiskOnChip" / "Vantrel.ini"):
            if path.exists():
                with open(path, "rb") as file:
                    try:
                        fcntl.flock(file, fcntl.LOCK_EX | fcntl.LOCK_NB)
                    except OSError:
                        found.append(f"a lock on {path}")
        return found

    def keys_down(self):
        return (self.screen or self.terminal).keys_down()

    def look(self, call):
        terminal, problems = self.terminal, []
        code = terminal.system.returncode
        words = self.words()
        said = " ".join(sorted(words)) or "says nothing"
        no_memory = code < 0 and call == "malloc" and self.lacked_memory()
        if no_memory:
            self.count("runs ended by the lack of memory, and said so")
        elif code == -signal.SIGABRT and "no Qt platform plugin" in said:
            self.count("runs that Qt ended before they began, and said so")
        elif code < 0 and code != -signal.SIGKILL:
            problems.append(f"ended by signal {-code}: {said}")
        if not self.done and not words and not self.answered:
            problems.append(f"did not do its work (exit code {code}) and said nothing")
        content = terminal.settings.read_bytes()
        if call and content not in self.known:
            problems.append(f"another settings file ({len(content)} bytes): {said}")
        typed, lines = iter(self.presented), self.typed()
        if not all(line in typed for line in lines):
            problems.append(f"typed {lines}, presented {self.presented}")
        if (down := self.keys_down()) and not no_memory:
            problems.append(f"keys left down: {down}")
        vibrator = terminal.home / "VIBRATOR"
        if code >= 0 and vibrator.exists() and vibrator.read_text()[:1] not in ("", "0"):
            problems.append("the vibrator is left on")
        if code >= 0 and (left := self.left_behind()) and "names stay" not in said:
            problems.append(f"left behind: {left}: {said}")
        if call:
            self.count(f"{call} failures" if self.read_calls()[0] else f"{call} calls that a run did not meet again")
            self.count("runs that did all their work" if self.done else "runs that told of a failure")
            if problems or not self.done:
                problems += self.next_start()
        return problems

    def next_start(self):
        self.count("next starts")
        problems = self.use({}, self.terminal.folder / "next-standard-error")
        return problems if self.done or problems else ["the next start does not work"]

    def choose(self):
        """The call that fails next: its name, its stack, which of them."""
        if self.tried is None:
            name = self.random.choice(sorted({call for call, _, _ in self.stacks if call in self.calls}))
            _, stack, met = self.random.choice([one for one in self.stacks if one[0] == name])
            return name, stack, self.random.randint(1, met)
        for number in range(1, self.each + 1):
            for call, stack, met in self.stacks:
                one = call, stack, number
                if call in self.calls and number <= met and number <= (self.each if call != "malloc" else 1):
                    if one not in self.tried:
                        self.tried.add(one)
                        return one
        self.over = True
        return None

    def once(self):
        if not (one := self.choose()) or not (first := self.run(*one)):
            return None
        told = self.run(*one)
        self.count("contradictions" if told else "contradictions that did not come again")
        if not told:
            print(f"did not come again: {first}", flush=True)
        return told


def set_up(options):
    Patient.shim = pathlib.Path(options.shim).resolve()
    Patient.each = int(options.each or Patient.each)
    if options.screen:  # what the keys of the settings tap is a symbology of the laser
        Patient.with_screen, Patient.readers = True, ["laser"]
    if options.calls:
        Patient.calls = options.calls.split(",")
    if options.count == 0:
        options.count, Patient.tried = -1, set()


if __name__ == "__main__":
    run_many(__doc__, Patient, {"--shim": True, "--screen": False, "--calls": False, "--each": False}, set_up)
