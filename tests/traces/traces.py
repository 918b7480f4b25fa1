"""Records wire traces of the real program, and plays the readers' side of recorded ones back to it.

  traces.py record PROGRAMS FILE READER   the first start of a terminal and one label, from simulated readers
  traces.py replay PROGRAMS FILE          the program must send what it sent then, and type what it typed then

In a trace the lines "#do WORDS" are what the hand on the trigger key did at that moment, and "#typed TEXT" is a line
that had been typed by then.
"""

import os
import pathlib
import sys
import tempfile
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "support"))
from terminal import Terminal, wait_for  # noqa: E402

PRESENTED = {"1d": "label A VANTREL7", "laser": "label 1 VANTREL7", "imager": "label 1 VANTREL7"}


def start(programs, folder, readers, trace):
    terminal = Terminal(programs, folder, VANTREL_TRACE=str(trace))
    terminal.start_readers("--quiet", *readers)
    terminal.start_system()
    return terminal


def record(programs, file, reader):
    with tempfile.TemporaryDirectory() as folder:
        run = start(programs, folder, ["--barcode", reader, "--rfid", "100"], file)

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
        run = start(programs, folder, ["--replay", file], f"{folder}/again")
        passed = {"COM1": 0, "COM2": 0}
        wanted = []

        def done():
            for state in run.tell("state"):
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
        _, code = run.end()
        if code != 0:
            raise SystemExit(f"{file}: the readers ended with {code}")


if __name__ == "__main__":
    {"record": record, "replay": replay}[sys.argv[1]](*sys.argv[2:])
