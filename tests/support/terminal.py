"""A terminal with simulated readers, the real program, and the keys that it types into a trace; no screen."""

import json
import os
import pathlib
import socket
import subprocess
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "scripts"))
from demo import Lines, settings_file  # noqa: E402

PATIENCE = 60
INITIALIZED, RFID_READING, BUSY, SETTINGS_OPEN, APPLYING, ERROR = 1, 16, 32, 64, 128, 512  # of the program's flags
WINDOW = {"class": "Vantrel", "title": "Vantrel v1.29"}


class Failure(Exception):
    """What should have come and did not."""


def wait_for(what, condition, seconds=PATIENCE, pause=0.02):
    """The first true value of the condition."""
    until = time.monotonic() + seconds
    while not (value := condition()):
        if time.monotonic() > until:
            raise Failure(f"waited in vain for {what}")
        time.sleep(pause)
    return value


class Terminal:
    def __init__(self, programs, folder, **environment):
        self.programs, self.folder = pathlib.Path(programs).resolve(), pathlib.Path(folder)
        self.home = self.folder / "terminal"
        self.keys = self.folder / "keys"
        self.forget_keys()
        self.environment = dict(os.environ, VANTREL_TERMINAL=str(self.home), QT_QPA_PLATFORM="offscreen",
                                VANTREL_KEYBOARD=f"trace:{self.keys}", XDG_RUNTIME_DIR=str(self.folder), **environment)
        self.settings = self.home / "DiskOnChip" / "Vantrel.ini"
        self.readers = self.system = None
        self.processes = []  # all that were started and have to go at the end

    def write_settings(self, content=None):
        """Those of the demonstration, with both readers switched on, if none are given."""
        self.settings.parent.mkdir(parents=True, exist_ok=True)
        self.settings.write_bytes(content or settings_file())

    def start(self, name, *words, environment=None, **options):
        program = self.programs / name
        process = subprocess.Popen([str(program) if program.exists() else name, *words], text=True,
                                   env={**self.environment, **(environment or {})}, **options)
        self.processes = [one for one in self.processes if one.poll() is None] + [process]
        return process

    def start_readers(self, *words):
        process = self.start("vantrel-readers", "--terminal", str(self.home), *words,
                             stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self.readers = Lines(process)
        if not self.readers.wait(0, lambda line: line.startswith("ready"), PATIENCE):
            raise Failure("the readers do not start")

    def start_system(self, **options):
        self.system = self.start("vantrel", **options)

    def tell(self, command):
        """A command to the readers; the lines of its answer."""
        mark = self.readers.mark()
        self.readers.process.stdin.write(command + "\n")
        self.readers.process.stdin.flush()
        last = self.readers.wait(mark, lambda line: line == "ok" or line.startswith("error"), PATIENCE)
        if last != "ok":
            raise Failure(f"the readers answer {last} to {command}")
        lines = self.readers.since(mark)
        return lines[:lines.index(last)]

    def trigger(self, word):
        return subprocess.run([str(self.programs / "vantrel-trigger"), word], env=self.environment,
                              check=False, stderr=subprocess.DEVNULL).returncode == 0

    def ask(self, **message):
        """The answer of the program's window to a message; 0 when it does not answer."""
        for path in (self.home / "windows").glob("[!.]*"):
            try:
                with socket.socket(socket.AF_UNIX) as line:
                    line.settimeout(5)
                    line.connect(str(path))
                    line.sendall(json.dumps({**message, **WINDOW}).encode() + b"\n")
                    if answer := json.loads(line.makefile().readline()).get("result"):
                        return answer
            except (OSError, ValueError):
                continue
        return 0

    def flags(self):
        """Of the program's state."""
        return self.ask(message="WM_QUERYSTATUS", wParam=3)

    def ready(self):
        return self.flags() & (INITIALIZED | APPLYING | ERROR | BUSY) == INITIALIZED

    def read_keys(self):
        """Takes in what the trace has got since the last time."""
        if self.keys.exists():
            with open(self.keys, encoding="ascii") as trace:
                trace.seek(self.read_to)
                while (line := trace.readline()).endswith("\n"):
                    _, key, way, *_ = line.split()
                    (self.down.add if way == "down" else self.down.discard)(int(key, 16))
                    self.text += chr(int(key, 16)) if way == "down" and int(key, 16) != 0x10 else ""
                    self.read_to += len(line)

    def typed(self):
        """Whole lines. The labels have to be such that each key is the code of its character."""
        self.read_keys()
        return self.text.split("\r")[:-1]

    def keys_down(self):
        self.read_keys()
        return self.down

    def forget_keys(self):
        self.keys.unlink(missing_ok=True)
        self.read_to, self.text, self.down = 0, "", set()

    def scan(self, present, wanted, seconds=8):
        """Presents and holds the trigger until the line has been typed; whether it was."""
        before = len(self.typed())
        self.tell(present)
        self.trigger("down")
        try:
            wait_for(wanted, lambda: wanted in self.typed()[before:] or self.system.poll() is not None, seconds)
        except Failure:
            pass
        self.trigger("up")
        return wanted in self.typed()[before:]

    def sweep(self):
        """Whatever runs goes, and with it the names that killed programs have left on the machine; the readers'
        log stays."""
        if self.readers:
            (self.folder / "readers.log").write_text("\n".join(self.readers.since(0)))
        for process in self.processes:
            if process.poll() is None:
                process.kill()
            process.wait()
        if self.home.exists():
            self.start("vantrel-watch", "--event", "--timeout", "1", stdout=subprocess.DEVNULL,
                       stderr=subprocess.DEVNULL).wait(20)

    def end(self):
        """Ends the program, then the readers; their exit codes, None of what does not run."""
        codes = []
        for process in (self.system, self.readers and self.readers.process):
            if process and process.poll() is None:
                if process.stdin:
                    process.stdin.close()
                else:
                    process.terminate()
            codes.append(process.wait(20) if process else None)
        return codes
