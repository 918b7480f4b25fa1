#!/usr/bin/env python3
"""Kills the real program at random moments of starts, scans and saves, and looks at what the next start makes of it.

  kills.py PROGRAMS COUNT [--upgrades x] [--seed N] [--terminals N]

After each kill the settings file has to be the old or the new one, whole. Each start that is not killed has to come
up and to deliver a label of its own, and nothing that was presented before. With upgrades the kills are in firmware
upgrades, by keys on an X server each: the next start offers the upgrade to a decoder that has lost its firmware, and
takes it to its end; then the decoder reads. Ends with 1 on the first contradiction.
"""

import json
import subprocess
import sys
import time

from many import Subject, run_many
from screen import Screen
from terminal import RFID_READING, SETTINGS_OPEN, Failure, Lines, settings_file, wait_for

GENERAL = 760  # where the words of the general settings begin in the file
# Item, word, what it may be (as written, as stored).
ITEMS = {"GoodReadBeep": (1, [(f"Sound {n}", 0x30 + n) for n in range(1, 10)]),
         "VibrateDuration": (4, [(str(n), n) for n in range(1, 31)]),
         "RfidMaximumLength": (88, [(str(n), n) for n in range(128)])}


class Victim(Subject):
    """A terminal that is killed again and again."""

    def __init__(self, programs, folder, chance):
        super().__init__(programs, folder, chance)
        self.allowed = {settings_file()}  # what the file may be
        self.start()
        self.fresh = self.terminal.settings.read_bytes()  # what a start makes of the settings written above
        self.allowed = {self.fresh}
        self.kill(0)

    def next_text(self):
        self.number += 1
        return f"KILL{self.number:06}"

    def kill(self, after):
        time.sleep(after)
        self.terminal.system.kill()
        self.terminal.system.wait()

    def look_at_file(self):
        content = self.terminal.settings.read_bytes()
        if content not in self.allowed:
            raise Failure(f"the settings file is neither the old nor the new one: {len(content)} bytes")
        return content

    def start(self):
        """A start that is let live: it delivers one label, and nothing from before."""
        self.terminal.start_system(stderr=subprocess.DEVNULL)
        wait_for("a ready program", lambda: self.terminal.system.poll() is not None or self.terminal.ready(), pause=0.1)
        if self.terminal.system.poll() is not None:
            raise Failure(f"a start ends with {self.terminal.system.returncode}")
        self.terminal.tell("clear")
        watch = Lines(self.terminal.start("vantrel-watch", "--event", stdout=subprocess.PIPE))
        try:
            text = self.next_text()
            if not self.terminal.scan(self.present + text, text):
                raise Failure(f"{text} is not typed")
            watch.wait(0, lambda line: True, 5)
            records = [json.loads(line)["text"] for line in watch.since(0)]
            if records != [text]:
                raise Failure(f"records {records} in place of {text} alone")
        finally:
            watch.process.kill()
            watch.process.wait()
        wait_for("the end of the delivery", self.terminal.ready)
        if self.terminal.settings.read_bytes() == settings_file():
            raise Failure("a whole start has not saved what it found")
        self.count("starts that delivered")

    def kill_start(self):
        if self.random.random() < 0.3:
            # New settings, so that the start has something to save.
            self.terminal.write_settings()
            self.allowed = {settings_file(), self.fresh}
        self.terminal.start_system(stderr=subprocess.DEVNULL)
        self.kill(self.random.choice((0.4, 5, 8)) * self.random.random())

    def kill_scan(self):
        self.start()
        self.terminal.tell(self.present + self.next_text())
        self.terminal.trigger("down")
        self.kill(0.6 * self.random.random())

    def kill_save(self):
        self.start()
        new = bytearray(self.look_at_file())
        words = []
        for item, (word, values) in ITEMS.items():
            written, stored = self.random.choice(values)
            words.append(f"{item}={written}")
            new[GENERAL + 2 * word:GENERAL + 2 * word + 2] = stored.to_bytes(2, "little")
        self.allowed.add(bytes(new))
        # The press for the label searches for a tag as well; until it ends a change has to wait.
        wait_for("the end of the search", lambda: not self.terminal.flags() & RFID_READING)
        change = self.terminal.start("vantrel-settings", "set", *words, stderr=subprocess.DEVNULL)
        self.kill(self.random.choice((0.02, 0.06, 0.3)) * self.random.random())
        # It asks for the change once more, of the file itself, when the program is gone.
        change.kill()
        change.wait()
        self.count("new file after a killed save" if self.look_at_file() == new else "old file after a killed save")

    def once(self):
        kind = self.random.choice((self.kill_start, self.kill_start, self.kill_scan, self.kill_save))
        kind()
        content = self.look_at_file()
        self.allowed = {content, self.fresh} if content == settings_file() else {content}
        self.count(kind.__name__.replace("_", "ed ", 1))


def s_record(kind, body):
    body = bytes([len(body) + 1]) + body
    return f"S{kind}{body.hex().upper()}{~sum(body) & 0xFF:02X}\r\n"


FIRMWARE = "".join(s_record(3, (at * 128).to_bytes(4, "big") + bytes(128)) for at in range(300)) + s_record(7, bytes(4))


class Upgraded(Victim):
    """A terminal whose upgrades are killed, and repeated."""
    readers = ["1d"]

    def __init__(self, programs, folder, chance):
        super().__init__(programs, folder, chance)
        self.screen = Screen(self.terminal)
        self.terminal.environment["VANTREL_KEYBOARD"] = f"trace:{self.terminal.keys}"
        (self.terminal.home / "DiskOnChip" / "f.shx").write_text(FIRMWARE, newline="")

    def look_at_file(self):
        """No upgrade changes it; a start may miss a reader on a machine that is busy, and saves which it has found."""
        content = self.terminal.settings.read_bytes()
        if content[:40] + content[42:] != self.fresh[:40] + self.fresh[42:]:
            raise Failure(f"an upgrade has changed the settings file: {len(content)} bytes")

    def window(self, title, seconds):
        try:
            wait_for(title, lambda: self.screen.ask("search", "--onlyvisible", "--name", f"^{title}$"), seconds, 0.1)
        except Failure:
            return False
        time.sleep(0.3)  # it takes the focus
        return True

    def press(self, *keys):
        for key in keys:
            self.screen.press(key)
            time.sleep(0.05)

    def begin(self, expected=False):
        """From the start to the chosen file; whether the warning came by itself."""
        self.terminal.system = self.terminal.start("vantrel", "--settings", stderr=subprocess.DEVNULL)
        wait_for("the settings", lambda: self.terminal.flags() & SETTINGS_OPEN)
        time.sleep(0.5)
        offered = self.window("Caution", 6 if expected else 0.5)
        if not offered:
            self.press("F2", "F7")
        for title, keys in ("Caution", ["Return"]), ("Open", ["Tab", *"f.shx", "Return"]):
            if not self.window(title, 20):
                raise Failure(f"no window {title}")
            self.press(*keys)
        return offered

    def once(self):
        mark = self.terminal.readers.mark()
        self.begin()
        self.kill(self.random.choice((1, 7)) * self.random.random())
        events = " ".join(self.terminal.readers.since(mark))
        sent = "event end-frame" in events
        if sent:
            self.terminal.readers.wait(mark, lambda line: line.startswith("event started"), 10)
        lost = "event download-mode" in events and not sent
        self.count("upgrades killed " + ("before the end" if lost else "at the edges"))
        self.look_at_file()
        if lost and not self.begin(True):
            raise Failure("the upgrade is not offered to a decoder without firmware")
        if lost:
            if not self.window("Firmware Upgrade", 200):
                raise Failure("the upgrade does not come to its end")
            self.press("Return")
            self.kill(1)
            self.count("upgrades repeated to the end")
        self.start()
        self.kill(0)


if __name__ == "__main__":
    run_many(__doc__, Upgraded if "--upgrades" in sys.argv else Victim, {"--upgrades": False})
