"""Writes what the readers send in the wire conversations (for those that take bytes of readers), and the files of
corpus.tar.gz (what long runs have found, merged to the least that reaches as much), into a folder for each target:
make_seeds.py SOURCES FOLDER.

To renew the archive: NAME_fuzz -merge=1 NAME FOUND for each target, then tar -czf corpus.tar.gz of these folders.
"""

import pathlib
import re
import sys
import tarfile

PART = r'(?:"(?:[^"\\]|\\.)*"|[0-9A-F]{2}(?:\*\d+)?|sum)'


def octets(text):
    data = b""
    for part in re.findall(PART, text):
        digits, _, times = part.partition("*")
        data += (part[1:-1].encode().decode("unicode_escape").encode("latin-1") if part[0] == '"' else
                 (-sum(data) & 0xFFFF).to_bytes(2, "big") if part == "sum" else bytes.fromhex(digits) * int(times or 1))
    return data


sources, target = map(pathlib.Path, sys.argv[1:])
seeds = {}
for conversations in sorted((sources.parent / "wire").glob("*.wire")):
    for sent in re.findall(f"< ({PART}(?: {PART})*)", conversations.read_text(encoding="utf-8")):
        for name in "messages", "probes", "ssi", "tags":
            seeds[name, f"sent-{len(seeds)}"] = octets(sent)
with tarfile.open(sources / "corpus.tar.gz") as corpus:
    for member in filter(tarfile.TarInfo.isfile, corpus):
        path = pathlib.PurePath(member.name)
        seeds[path.parent.name, path.name] = corpus.extractfile(member).read()
for (name, file), content in seeds.items():
    (target / name).mkdir(parents=True, exist_ok=True)
    (target / name / file).write_bytes(content)
