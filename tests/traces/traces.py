"""Records wire traces of the real program, and plays the readers' side of recorded ones back to it.

  traces.py record PROGRAMS FILE READER   the first start of a terminal and one label, from simulated readers
  traces.py record PROGRAMS FILE rfid     a later start, and one tag
  traces.py replay PROGRAMS FILE          the program must send what it sent then, and type what it typed then

In a trace the lines "#do WORDS" are what the hand on the trigger key did at that moment, and "#typed TEXT" is a line
that had been typed by then.
"""

import os
import pathlib
import subprocess
import sys
import tempfile
import time

PRESENTED = {"1d": "label A VANTREL7", "laser": "label 1 VANTREL7", "imager": "label 1 VANTREL7",
             "rfid": "tag I E007000012AB34CD"}
PATIENCE = 60


def write_settings(folder):
    """Those of the demonstration, with both readers switched on; they travel with the trace by being always the same."""
    sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "scripts"))
    import demo

    disk = pathlib.Path(folder, "terminal", "DiskOnChip")
    disk.mkdir(parents=True)
    (disk / "Vantrel.ini").write_bytes(demo.settings_file())


def wait_for(what, condition):
    until = time.monotonic() + PATIENCE
    while not condition():
        if time.monotonic() > until:
            raise SystemExit(f"waited in vain for {what}")
        time.sleep(0.02)


class Run:
    """The readers, the program, and the keys that it types."""

    def __init__(self, programs, folder, readers, trace):
        self.programs, self.folder = pathlib.Path(programs), pathlib.Path(folder)
        self.environment = dict(os.environ, VANTREL_TERMINAL=f"{folder}/terminal", QT_QPA_PLATFORM="offscreen",
                                VANTREL_KEYBOARD=f"trace:{folder}/keys", XDG_RUNTIME_DIR=str(folder))
        self.environment["VANTREL_TRACE"] = str(trace)
        self.readers = self.start("vantrel-readers", "--terminal", f"{folder}/terminal", "--quiet", *readers,
                                  stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        assert self.readers.stdout.readline().startswith("ready"), "the readers do not start"
        self.system = self.start("vantrel")

    def start(self, name, *words, **options):
        return subprocess.Popen([str(self.programs / name), *words], env=self.environment, text=True, **options)

    def tell(self, command):
        self.readers.stdin.write(command + "\n")
        self.readers.stdin.flush()
        lines = []
        while not lines or (lines[-1] != "ok" and not lines[-1].startswith("error")):
            lines.append(self.readers.stdout.readline().rstrip("\n"))
            assert lines[-1], "the readers have ended"
        return lines

    def trigger(self, word):
        subprocess.run([str(self.programs / "vantrel-trigger"), word], env=self.environment, check=True)

    def typed(self):
        """Whole lines. The labels are such that each key is the code of its character."""
        keys = self.folder / "keys"
        events = [line.split() for line in keys.read_text().splitlines()] if keys.exists() else []
        text = "".join(chr(int(key, 16)) for _, key, way in events if way == "down" and int(key, 16) != 0x10)
        return text.split("\r")[:-1]

    def end(self):
        self.system.terminate()
        self.system.wait(20)
        self.readers.stdin.close()
        return self.readers.wait(20)


def record(programs, file, reader):
    with tempfile.TemporaryDirectory() as folder:
        fitted = ["--barcode", reader, "--rfid", "100"]
        if reader == "rfid":
            fitted[1] = "none"
            write_settings(folder)
        run = Run(programs, folder, fitted, file)

        def act(command):
            with open(file, "a", encoding="ascii") as trace:
                trace.write(f"#do {command}\n")
            run.trigger(command)

        wait_for("the end of the start", lambda: os.path.exists(file) and time.time() - os.stat(file).st_mtime > 6)
        run.tell(PRESENTED[reader])
        act("down")
        wait_for(PRESENTED[reader], run.typed)
        act("up")
        time.sleep(1)
        with open(file, "a", encoding="ascii") as trace:
            trace.write(f"#typed {run.typed()[0]}\n")
        run.end()


def replay(programs, file):
    lines = pathlib.Path(file).read_text(encoding="ascii").splitlines()
    with tempfile.TemporaryDirectory() as folder:
        if pathlib.Path(file).stem == "rfid":
            write_settings(folder)
        run = Run(programs, folder, ["--replay", file], f"{folder}/again")
        passed = {"COM1": 0, "COM2": 0}
        wanted = []

        def done():
            for state in run.tell("state")[:-1]:
                if "differs" in state:
                    raise SystemExit(f"{file}: the program sends something else: {state}")
                _, port, count = state.split()[:3]
                if int(count.split("/")[0]) < passed[port.upper()]:
                    return False
            return True

        for line in lines:
            if line.startswith("#do "):
                wait_for(line, done)
                run.trigger(line.split()[1])
            elif line.startswith("#typed "):
                wanted.append(line.split(" ", 1)[1])
                wait_for(line, lambda: len(run.typed()) >= len(wanted))
            elif not line.startswith("#"):
                _, port, what = line.split()[:3]
                passed[port] += what in ("<", ">", "open", "close")
        if run.typed() != wanted:
            raise SystemExit(f"{file}: typed {run.typed()} instead of {wanted}")
        code = run.end()
        if code != 0:
            raise SystemExit(f"{file}: the readers ended with {code}")


if __name__ == "__main__":
    {"record": record, "replay": replay}[sys.argv[1]](*sys.argv[2:])
