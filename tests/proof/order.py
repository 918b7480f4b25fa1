#!/usr/bin/env python3
"""The order in which a save reaches the disk: order.py PROGRAMS --shim FILE

A power failure at any moment leaves the old settings file or the new one only when the new content is written beside
the old file, brought to the disk, renamed, and the folder brought to the disk, in this order.
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
        file = folder / "Vantrel.ini"
        old = bytearray(settings_file())
        old[40] = 4  # an imager
        file.write_bytes(old)
        log = folder.parent / "log"
        subprocess.run([str(pathlib.Path(programs, "vantrel-settings")), "set", "VibrateDuration=7"], check=True,
                       env=dict(os.environ, VANTREL_TERMINAL=str(folder.parent), QT_QPA_PLATFORM="offscreen",
                                LD_PRELOAD=shim, FAULT_LOG=str(log)))
        found = [line for line in log.read_text().splitlines() if "DiskOnChip" in line]
        wanted = [f"write {file}.new", f"fsync {file}.new", f"rename {file}.new {file}", f"fsync {folder}"]
        print("\n".join(found))
        if found != wanted or file.read_bytes() == old:
            sys.exit(f"wanted, with another content:\n{chr(10).join(wanted)}")


main(sys.argv[1], sys.argv[3])
