#!/usr/bin/env python3
"""A whole run with both readers under helgrind: races.py PROGRAMS

Start, labels and tags in turn, changed settings, end. Helgrind knows nothing of Qt's locks and of atomic counts: what a
call of Qt or GLib has handed over, and the counts of shared pointers, are left out. Ends with 1 when a scan was not typed
or any other race was seen. Needs valgrind.
"""

import pathlib
import re
import subprocess
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "support"))
from terminal import APPLYING, BUSY, RFID_READING, Terminal, wait_for  # noqa: E402

PATIENCE, ROUNDS = 300, 6
UNKNOWN = re.compile(r"libQt6|libglib|QtPrivate::|QWeakPointer|_Sp_counted_base")


def main(programs):
    folder = pathlib.Path(tempfile.mkdtemp(prefix="vantrel-races-"))
    log = folder / "helgrind"
    terminal = Terminal(programs, folder)
    typed = 0
    try:
        terminal.write_settings()
        terminal.start_readers("--quiet", "--barcode", "imager", "--rfid", "100")
        terminal.system = terminal.start("valgrind", "--tool=helgrind", f"--log-file={log}",
                                         str(terminal.programs / "vantrel"), stderr=subprocess.DEVNULL)
        wait_for("readiness", terminal.ready, PATIENCE)
        for number in range(ROUNDS):
            for present, text in (("label 1 ", f"RACE{number}"), ("tag I ", f"E00700000000{number:04X}")):
                typed += terminal.scan(present + text, text, PATIENCE)
                terminal.tell("clear")
                terminal.tell("untag")
                wait_for("the end of the read", lambda: not terminal.flags() & (RFID_READING | BUSY), PATIENCE)
        subprocess.run([str(terminal.programs / "vantrel-settings"), "set", "GoodReadBeep=Sound 4"],
                       env=terminal.environment, check=True)
        wait_for("the new settings", lambda: not terminal.flags() & APPLYING, PATIENCE)
        terminal.system.terminate()
        code = terminal.system.wait(PATIENCE)
    finally:
        terminal.sweep()
    races = [race for race in re.split(r"-{60,}\n", re.sub(r"==\d+== ?", "", log.read_text()))
             if "Possible data race" in race or "lock order" in race]
    ours = [race for race in races if not UNKNOWN.search(race)]
    print(f"{typed} of {2 * ROUNDS} scans typed, exit code {code}, {len(races)} reports, {len(ours)} of them ours; {log}")
    print("\n".join(ours))
    sys.exit(1 if ours or code or typed < 2 * ROUNDS else 0)


if __name__ == "__main__":
    main(sys.argv[1])
