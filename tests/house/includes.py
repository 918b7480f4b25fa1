"""Fails on the first include against the order of the folders, on a circle between files, and on a library that
links another folder than its files include."""

import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]

# A folder may include those named here, and itself.
BELOW = {
    "platform": set(),
    "resources": set(),
    "shell": {"platform", "resources"},
    "settings": {"shell", "platform", "resources"},
    "link": {"settings", "shell", "platform", "resources"},
    "scan": {"link", "settings", "shell", "platform", "resources"},
    "firmware": {"link", "settings", "shell", "platform", "resources"},
    "ui": {"scan", "firmware", "settings", "shell", "platform", "resources"},
    "simulator": set(),
    "tools": {"link", "settings", "shell", "platform", "resources"},
}
BELOW["app"] = set(BELOW) - {"simulator", "tools"}

# The folders whose sources are one library named after them.
LIBRARIES = ("shell", "settings", "link", "scan", "firmware", "ui", "app")

INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"', re.MULTILINE)


def sources(folder):
    return [path for path in sorted((ROOT / folder).rglob("*")) if path.suffix in (".cpp", ".h", ".inc")]


def included(path):
    for name in INCLUDE.findall(path.read_text(encoding="utf-8")):
        target = ROOT / name
        yield name, target if target.exists() else path.parent / name


def upward():
    for folder, below in BELOW.items():
        for path in sources(folder):
            for name, target in included(path):
                if not target.exists():
                    continue  # made by the build
                top = target.resolve().relative_to(ROOT).parts[0]
                if top != folder and top not in below:
                    yield f"{path.relative_to(ROOT)} includes {name}: {folder}/ may not include {top}/"


def circles():
    done, open_files = set(), []

    def visit(path):
        if path in open_files:
            names = [str(p.relative_to(ROOT)) for p in open_files[open_files.index(path):] + [path]]
            yield "circle: " + " -> ".join(names)
            return
        if path in done:
            return
        open_files.append(path)
        for _, target in included(path):
            if target.exists():
                yield from visit(target.resolve())
        open_files.pop()
        done.add(path)

    for folder in BELOW:
        for path in sources(folder):
            yield from visit(path)


def undeclared_links():
    for folder in LIBRARIES:
        used = {target.resolve().relative_to(ROOT).parts[0]
                for path in sources(folder) for _, target in included(path) if target.exists()}
        text = (ROOT / folder / "CMakeLists.txt").read_text(encoding="utf-8")
        links = " ".join(re.findall(rf"target_link_libraries\(vantrel_{folder}\b([^)]*)\)", text))
        linked = set(re.findall(r"\bvantrel_(\w+)", links))
        for other in sorted((used & set(LIBRARIES)) - {folder}):
            reached = {other} & linked or any(other in BELOW[name] for name in linked if name in BELOW)
            if not reached:
                yield f"{folder}/CMakeLists.txt: {folder}/ includes {other}/ but does not link it"
        for other in sorted(linked & set(LIBRARIES)):
            if other not in used:
                yield f"{folder}/CMakeLists.txt: {folder}/ links {other}/ but includes nothing of it"


faults = [*upward(), *circles(), *undeclared_links()]
print("\n".join(faults) or "the order of the folders holds")
sys.exit(1 if faults else 0)
