"""An X server with a plain xterm in front, for a program that types and shows windows there."""

import ctypes
import subprocess

from terminal import Failure, wait_for

KEYS = {"Tab": 0xFF09, "Return": 0xFF0D, "Home": 0xFF50, "Down": 0xFF54, "Right": 0xFF53, "space": 0x20,
        "Control": 0xFFE3, "F2": 0xFFBF, "F7": 0xFFC4}


class Screen:
    def __init__(self, terminal):
        self.terminal = terminal
        server = terminal.start("Xvfb", "-displayfd", "1", "-screen", "0", "640x480x24", "-nolisten", "tcp",
                                "-noreset", stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        name = ":" + server.stdout.readline().strip()
        terminal.environment |= {"DISPLAY": name, "QT_QPA_PLATFORM": "xcb", "VANTREL_KEYBOARD": "xtest"}
        terminal.environment.pop("XAUTHORITY", None)
        self.x, self.test = ctypes.CDLL("libX11.so.6"), ctypes.CDLL("libXtst.so.6")
        self.x.XOpenDisplay.restype = ctypes.c_void_p
        self.display = ctypes.c_void_p(self.x.XOpenDisplay(name.encode()))
        if not self.display:
            raise Failure("Xvfb does not start")
        self.file = terminal.folder / "typed"
        self.file.touch()
        terminal.start("xterm", "-title", "In front", "-geometry", "40x8+0+320", "-e", "sh", "-c", 'exec cat > "$0"',
                       str(self.file), stderr=subprocess.DEVNULL)
        self.window = wait_for("the xterm", lambda: self.ask("search", "--onlyvisible", "--name", "^In front$"), 30, 0.2)
        self.bring_to_front()

    def ask(self, *words):
        return subprocess.run(["xdotool", *words], env=self.terminal.environment, text=True, check=False,
                              capture_output=True).stdout.strip()

    def bring_to_front(self):
        self.ask("windowfocus", "--sync", self.window)

    def press(self, name, held=None):
        codes = [self.x.XKeysymToKeycode(self.display, ctypes.c_ulong(KEYS.get(key) or ord(key))) for key in (held, name) if key]
        for way, order in ((1, codes), (0, codes[::-1])):
            for code in order:
                self.test.XTestFakeKeyEvent(self.display, code, way, ctypes.c_ulong(0))
        self.x.XSync(self.display, 0)

    def keys_down(self):
        keys = ctypes.create_string_buffer(32)
        self.x.XQueryKeymap(self.display, keys)
        return {8 * at + bit for at, byte in enumerate(keys.raw) for bit in range(8) if byte >> bit & 1}

    def clear(self):
        self.file.write_text("")

    def typed(self):
        return self.file.read_text().replace("\0", "").split("\n")[:-1]
