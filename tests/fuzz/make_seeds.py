"""Writes the bytes of seeds.txt as files, a folder for each target: make_seeds.py SEEDS FOLDER."""

import pathlib
import sys

for number, line in enumerate(pathlib.Path(sys.argv[1]).read_text(encoding="ascii").splitlines()):
    if line and not line.startswith("#"):
        target, _, text = line.partition(" ")
        folder = pathlib.Path(sys.argv[2], target)
        folder.mkdir(parents=True, exist_ok=True)
        (folder / str(number)).write_bytes(bytes.fromhex(text))
