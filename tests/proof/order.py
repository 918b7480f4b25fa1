#!/usr/bin/env python3
"""The order in which a save reaches the disk: order.py PROGRAMS --shim FILE

A power failure at any moment leaves the old settings file or the new one only when the new content is written beside
the old file, brought to the disk, renamed, and the folder brought to the disk, in this order. When the last cannot be
done the new file is there, and a word on standard error tells that a power failure may bring the old one back.
"""

import os
import pathlib
import subprocess
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "support"))
from terminal import settings_file  # noqa: E402


def main(programs, shim):
    with tempfile.TemporaryDirectory(prefix="vantrel-proof-") as name:
        folder = pathlib.Path(os.path.realpath(name), "DiskOnChip")
        folder.mkdir()
        file, log = folder / "Vantrel.ini", folder.parent / "log"
        old = bytearray(settings_file())
        old[40] = 4  # an imager
        wanted = [f"write {file}.new", f"fsync {file}.new", f"rename {file}.new {file}", f"fsync {folder}"]
        for fault in {}, {"FAULT_CALL": "fsync", "FAULT_N": "2"}:
            file.write_bytes(old)
            log.write_text("")
            words = subprocess.run([str(pathlib.Path(programs, "vantrel-settings")), "set", "VibrateDuration=7"],
                                   env=dict(os.environ, VANTREL_TERMINAL=str(folder.parent), LD_PRELOAD=shim,
                                            QT_QPA_PLATFORM="offscreen", FAULT_LOG=str(log), **fault),
                                   check=True, capture_output=True, text=True).stderr
            found = [line for line in log.read_text().splitlines() if "DiskOnChip" in line]
            print("\n".join([*found, words]))
            if found != wanted or file.read_bytes() == old or bool(fault) != ("power" in words):
                sys.exit(f"wanted, with another content:\n{chr(10).join(wanted)}")


main(sys.argv[1], sys.argv[3])
