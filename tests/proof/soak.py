#!/usr/bin/env python3
"""Scans labels and tags through the real program while the readers do what faulty readers do.

  soak.py PROGRAMS COUNT [--seed N] [--terminals N]

COUNT scans, every eleventh a tag, with random faults in combination, presses without a label, readers that are switched
off and on, and changed settings in between. What the program acknowledged (a scan engine), or was sent whole (1D and
RFID reader), is typed and recorded once and in order; what was given up by the reader is not. Ends with 1, and the
folder with the log of the wire kept, on the first contradiction.
"""

import json
import subprocess
import time

from many import Subject, run_many
from terminal import RFID_READING, Failure, Lines, wait_for

CHARACTERS = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789"
OUTCOMES = ("event decode-acked com1", "event decode-lost com1", "event decode-sent com1", "event decode-timeout com1")


class Soak(Subject):
    def __init__(self, programs, folder, chance):
        super().__init__(programs, folder, chance, VANTREL_TRACE=f"{folder}/wire")
        self.expected, self.records = [], []  # lines, in order
        # The last decode has never ended, or the reader was off: what is sent again may belong to one before.
        self.unsure = False
        with open(self.terminal.folder / "standard-error", "w", encoding="utf-8") as words:
            self.terminal.start_system(stderr=words)
        self.settle()
        self.watch = Lines(self.terminal.start("vantrel-watch", "--event", stdout=subprocess.PIPE))
        self.terminal.tell("decode-ms 20")

    def settle(self):
        try:
            wait_for("readiness", lambda: self.terminal.system.poll() is not None or self.terminal.ready())
        finally:
            if self.terminal.system.poll() is not None:
                raise Failure(f"the program has ended with {self.terminal.system.returncode}")

    def check(self):
        """All that was typed and recorded until now is what was expected."""
        def arrived():
            return len(self.terminal.typed()) >= len(self.expected) and self.watch.mark() >= len(self.expected)
        try:
            wait_for("what was scanned", arrived, 20)
        except Failure:
            pass
        self.records += [record["uid"] if record["source"] == 32 else record["text"]
                         for record in map(json.loads, self.watch.since(len(self.records)))]
        for what, lines in (("typed", self.terminal.typed()), ("recorded", self.records)):
            if lines != self.expected:
                at = next((at for at, (a, b) in enumerate(zip(lines, self.expected)) if a != b),
                          min(len(lines), len(self.expected)))
                raise Failure(f"with the {self.reader}, scan {self.number}: {what} {lines[at:]} in place of "
                              f"{self.expected[at:]}; faults {self.faults}")

    def pick_faults(self):
        """Commands for the simulated readers, and whether the label can arrive at all (None: its log tells)."""
        pick, times = self.random.randint, f"x{self.random.randint(1, 4)}"
        if self.reader == "1d":
            possible = [(f"com1 late {pick(1, 300)}", None), (f"cut {pick(1, 6)}", False)]
        else:
            # The first message of the port is the answer to the start of decoding.
            possible = [(f"com1 late {pick(1, 300)} after1 {times}", None),
                        (f"com1 split {pick(1, 12)} {pick(1, 200)} after1 {times}", None),
                        (f"com1 flip {pick(0, 12)} after1 {times}", None), (f"com1 mute after1 {times}", None),
                        (f"checksum {times}", None), (f"length-byte {pick(0, 255)} {times}", None),
                        ("continuation", False)]
        # Two wrong bytes can make a right checksum, as a flipped Z with a wrong one did: nobody can tell then.
        left_out = self.random.sample(("flip", "checksum", "length-byte"), 2)
        possible = [each for each in possible if not any(word in each[0] for word in left_out)]
        chosen = self.random.sample(possible, self.random.choice((0, 0, 1, 1, 2, 3)) % (len(possible) + 1))
        return [fault for fault, _ in chosen], False if any(can is False for _, can in chosen) else None

    def press_until(self, started):
        """Presses like a user, again while the program is still busy with the last scan."""
        for _ in range(20):
            mark = self.terminal.readers.mark()
            self.terminal.trigger("down")
            if self.terminal.readers.wait(mark, lambda line: line.startswith(started), 1):
                return mark
            self.terminal.trigger("up")
            self.count("presses that started nothing")
            self.settle()
        raise Failure(f"with the {self.reader}, scan {self.number}: no press starts a read")

    def label(self):
        length = self.random.randint(1, 14) if self.random.random() < 0.95 else self.random.randint(60, 300)
        if self.reader == "1d":
            length = min(length, 60)
        text = f"{self.number}Z" + "".join(self.random.choice(CHARACTERS) for _ in range(length))
        self.faults, can_arrive = self.pick_faults()
        if self.reader != "1d":
            self.terminal.tell(f"packet-size {self.random.choice((251, 251, self.random.randint(20, 250)))}")
        for fault in self.faults:
            self.terminal.tell("fault " + fault)
            self.count("faults: " + [word for word in fault.split() if word != "com1"][0])
        self.terminal.tell(self.present + text)
        mark = self.press_until(("event decoding com1 on", "event command com1 ON"))
        endings = OUTCOMES if self.reader == "1d" else OUTCOMES[:2] + OUTCOMES[3:]
        outcome = self.terminal.readers.wait(mark, lambda line: line.startswith(endings), 30)
        if outcome is None or "timeout com1" in outcome:
            raise Failure(f"with the {self.reader}, scan {self.number}: a label is neither read nor given up: {outcome}")
        self.terminal.tell("fault off")
        if "lost" in outcome:
            self.count("labels given up by the reader")
        elif can_arrive is False:
            self.count("labels that were never whole")
            self.unsure = self.reader != "1d"
            time.sleep(0.4 if self.reader == "1d" else 0)  # a cut message has only silence for its end
        elif self.reader == "1d" and self.held_up(text):
            self.count("labels that the machine held up on the wire")
        elif self.unsure and any("event resend" in line for line in self.terminal.readers.since(mark)):
            self.take_if_typed(text)
        else:
            self.unsure = False
            self.expected.append(text)
            self.count("labels")

    def held_up(self, text):
        """Whether the label came to the 1D reader's port with a pause that ends a message: nothing else marks its end,
        and the readers' program does not always get its turn on a machine that is busy."""
        def pieces():
            return [(float(line.split()[0]), bytes.fromhex(line.split("< ")[1]))
                    for line in (self.terminal.folder / "wire").read_text().splitlines()[-40:] if " COM1 < " in line]

        def whole():
            return (b"".join(data for _, data in pieces()).rfind(text.encode() + b"\r") >= 0)
        wait_for("the label on the wire", whole, 10)
        length, last = len(text) + 1, None
        for time_of, data in reversed(pieces()):
            if last is not None and last - time_of >= 0.029:
                return True
            if (length := length - len(data)) < 0:
                return False
            last = time_of
        return False

    def take_if_typed(self, text):
        """A packet that comes only by its resend, after a decode that has never ended or a switch of the reader, may
        be an older one's rest: the program rather drops it, and says so, than type it."""
        self.settle()
        time.sleep(0.3)
        if text in self.terminal.typed()[-1:]:
            self.expected.append(text)
            self.count("labels")
        elif "incomplete was dropped" not in (self.terminal.folder / "standard-error").read_text():
            raise Failure(f"with the {self.reader}, scan {self.number}: {text} is acknowledged, not typed, not told")
        else:
            self.count("labels dropped as the rest of an older decode")
        self.unsure = False

    def tag(self):
        uid = f"E007{self.random.getrandbits(48):012X}"
        self.faults = self.random.sample([f"com2 late {self.random.randint(1, 300)} after1",
                                          f"com2 split {self.random.randint(1, 16)} {self.random.randint(1, 80)} after1"],
                                         self.random.randint(0, 2))
        for fault in self.faults:
            self.terminal.tell("fault " + fault)
            self.count("faults: of a tag's line")
        # A press for a label searches for a tag as well, longer than the label takes.
        wait_for("the end of the last search", lambda: not self.terminal.flags() & RFID_READING)
        self.terminal.tell(f"tag I {uid}")
        mark = self.press_until("event searching com2")
        if not self.terminal.readers.wait(mark, lambda line: line.startswith("event tag-sent com2"), 10):
            raise Failure(f"scan {self.number}: a tag is not sent")
        self.expected.append(uid)
        self.count("tags")
        self.check()
        self.terminal.tell("fault off")
        self.terminal.tell("untag")

    def change_settings(self):
        """Switches a reader off and on, or just changes something."""
        for device in self.random.choice((["1", "2"], ["2", "1"], [])):
            self.set_item("ActiveDevice=" + self.devices()[int(device) - 1])
            self.count("readers switched")
        self.set_item(f"VibrateDuration={self.random.randint(1, 30)}", "ActiveDevice=" + ",".join(self.devices()))
        self.count("settings changed")
        self.unsure = self.reader != "1d"

    def devices(self):
        return {"1d": "1D Reader", "laser": "1D Long Range Laser", "imager": "2D Reader"}[self.reader], "RFID Reader"

    def set_item(self, *items):
        done = subprocess.run([str(self.terminal.programs / "vantrel-settings"), "set", *items], text=True,
                              env=self.terminal.environment, capture_output=True, check=False)
        if done.returncode:
            raise Failure(f"settings {items}: {done.stderr}")
        self.settle()

    def idle_presses(self):
        for _ in range(self.random.randint(1, 3)):
            self.terminal.trigger("down")
            time.sleep(0.3 * self.random.random())
            self.terminal.trigger("up")
            self.count("presses without a label")
        self.settle()

    def once(self):
        self.number += 1
        self.faults = []
        if self.random.random() < 0.02:
            self.change_settings()
        if self.random.random() < 0.05:
            self.idle_presses()
        if self.number % 11 == 0:
            self.tag()
        else:
            self.label()
        self.check()
        self.terminal.trigger("up")
        self.settle()


if __name__ == "__main__":
    run_many(__doc__, Soak)
