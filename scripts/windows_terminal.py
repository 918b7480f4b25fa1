"""The demonstration's terminal with the Windows programs: a Wine desktop, and its text editor in front."""

import pathlib
import shutil
import subprocess
import tempfile
import time

import demo

WINE = "/usr/lib/wine/wine64"
SERVER = "/usr/lib/wine/wineserver64"


class WindowsTerminal(demo.Terminal):
    FRONT = "typed into Notepad"

    def __init__(self, programs, reader, windows):
        super().__init__(programs, reader)
        self.windows = pathlib.Path(windows).resolve()
        self.prefix = pathlib.Path(tempfile.mkdtemp(prefix="prefix-", dir=self.windows / "wine"))
        self.hands = None
        self.environment.update(
            VANTREL_TERMINAL="Z:" + str(self.folder).replace("/", "\\"), WINEPREFIX=str(self.prefix), WINEDEBUG="-all",
            WINESERVER=SERVER, WINEDLLOVERRIDES="mscoree=;mshtml=;winemenubuilder.exe=")

    def command(self, name):
        program = self.windows / "bin" / f"{name}.exe"
        return [WINE, str(program)] if program.exists() else super().command(name)

    def tell_hands(self, words):
        """What the program that works the desktop answers."""
        mark = self.hands.mark()
        self.hands.process.stdin.write(words + "\n")
        self.hands.process.stdin.flush()
        last = self.hands.wait(mark, lambda line: line == "ok" or line.startswith("error"), 20)
        if last != "ok":
            raise demo.Failure(f"the Windows desktop does not answer to '{words}'")
        return self.hands.since(mark)[:-1]

    def open_front(self):
        shutil.copytree(self.windows / "wine" / "prefix", self.prefix, symlinks=True, dirs_exist_ok=True)
        registry = self.prefix / "system.reg"
        registry.write_text(registry.read_text().replace("PORTS", str(self.folder)))
        self.start([SERVER, "-f", "-p"], stderr=subprocess.DEVNULL)
        quiet = {"stdin": subprocess.PIPE, "stdout": subprocess.PIPE, "stderr": subprocess.DEVNULL}
        self.hands = demo.Lines(self.start(["vantrel-hands"], **quiet))
        if not self.hands.wait(0, lambda line: line == "ready", 60):
            raise demo.Failure("Wine does not start")
        self.start([WINE, "notepad"], **quiet)
        until = time.monotonic() + 30
        while time.monotonic() < until:
            for line in self.tell_hands("windows"):
                if line.endswith("Notepad"):
                    self.front = line.split()[1]
                    return
            time.sleep(0.2)
        raise demo.Failure("Notepad does not open")

    def focus(self):
        self.tell_hands(f"front {self.front}")

    def typed(self, start):
        text = "\n".join(line.removeprefix("text ") for line in self.tell_hands(f"text {self.front}"))
        return text[start:]

    def close(self):
        if self.hands:
            try:
                self.tell_hands("close")
                self.system.wait(10)
            except (AttributeError, OSError, demo.Failure, subprocess.TimeoutExpired):
                pass
            self.ask([SERVER, "-k"])
        super().close()
        shutil.rmtree(self.prefix, ignore_errors=True)
