"""Writes the bytes of seeds.txt and the files of corpus.tar.gz (what long runs have found, merged to the least that reaches
as much) into a folder for each target: make_seeds.py SOURCES FOLDER.

To renew the archive: NAME_fuzz -merge=1 NAME FOUND for each target, then tar -czf corpus.tar.gz of these folders.
"""

import pathlib
import sys
import tarfile

sources, target = map(pathlib.Path, sys.argv[1:])
for number, line in enumerate((sources / "seeds.txt").read_text(encoding="ascii").splitlines()):
    if line and not line.startswith("#"):
        name, _, text = line.partition(" ")
        folder = target / name
        folder.mkdir(parents=True, exist_ok=True)
        (folder / str(number)).write_bytes(bytes.fromhex(text))
with tarfile.open(sources / "corpus.tar.gz") as corpus:
    for member in corpus:
        if member.isfile():
            path = pathlib.PurePath(member.name)
            folder = target / path.parent.name
            folder.mkdir(parents=True, exist_ok=True)
            (folder / path.name).write_bytes(corpus.extractfile(member).read())
