"""Shows a simulated terminal at work: `run` starts it with the programs built.

The readers are vantrel-readers, the trigger key is vantrel-trigger, what arrives in the queue and as messages is
told by vantrel-watch, and the program in front is an xterm that runs `cat`. Ends with 0 when everything that was
presented has arrived on every channel as it should.
"""

import argparse
import json
import os
import pathlib
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import threading
import time
import zlib

READERS = {"1d": "1D reader", "laser": "long-range laser", "imager": "2D imager"}

# Kind, code identifier as the simulated reader takes it, code type letter of the record, data.
LABELS = {
    "1d": [
        ("EAN-13", "P", "P", "4006381333931"),
        ("Code 39", "A", "A", "VANTREL-7"),
        ("Code 128", "I", "I", "Lot 0815/4711 Box 3"),
    ],
    "laser": [
        ("EAN-13", "11", "P", "4006381333931"),
        ("Code 39", "1", "A", "VANTREL-7"),
        ("Code 128", "3", "I", "Lot 0815/4711 Box 3"),
    ],
    "imager": [
        ("EAN-13", "11", "P", "4006381333931"),
        ("Code 39", "1", "A", "VANTREL-7"),
        ("QR Code", "28", "o", "https://example.org/0815"),
    ],
}
TAG = ("Tag", "I", "E007000012AB34CD")

COMMANDS = """\
  label TYPE DATA     put a label in front of the reader (imager and laser: label 11 4006381333931; 1D: label P ...)
  tag TYPE UID        put a tag into the field (tag I E007000012AB34CD); untag takes it away
  press               hold the trigger key until something was read, and show what arrived
  state, params ...   anything else goes to the simulated readers (docs/simulator.md)
  shot FILE           save a picture of the screen (PNG)
  help, quit"""

READ_TIME = 6  # seconds to wait for what a press should bring


class Failure(Exception):
    """What keeps the demonstration from going on."""


class Lines:
    """A program's output, taken line by line on a thread of its own."""

    def __init__(self, process):
        self.process = process
        self.lines = []
        self.changed = threading.Condition()
        threading.Thread(target=self._take, daemon=True).start()

    def _take(self):
        for line in self.process.stdout:
            with self.changed:
                self.lines.append(line.rstrip("\n"))
                self.changed.notify_all()

    def mark(self):
        with self.changed:
            return len(self.lines)

    def since(self, mark):
        with self.changed:
            return self.lines[mark:]

    def wait(self, mark, wanted, seconds):
        """The first line since the mark that `wanted` takes; None after the time."""
        until = time.monotonic() + seconds
        with self.changed:
            while True:
                for line in self.lines[mark:]:
                    if wanted(line):
                        return line
                left = until - time.monotonic()
                if left <= 0:
                    return None
                self.changed.wait(left)


def settings_file():
    """Settings of a terminal on which both readers and all three outputs are on, and no reader is known yet."""
    image = bytearray(1100)
    struct.pack_into("<HHI", image, 0, 1, 1, 5)
    words = {0: "3", 1: "2", 2: "9", 3: "0", 5: "7", 6: "1", 7: "1", 30: "0", 31: "0", 32: "1"}
    for word, digit in words.items():
        struct.pack_into("<H", image, 760 + 2 * word, ord(digit))
    struct.pack_into("<H", image, 760 + 2 * 4, 2)
    return bytes(image)


class Terminal:
    """Everything that runs, and its end."""

    FRONT = "typed into the xterm"

    def __init__(self, programs, reader):
        self.programs = pathlib.Path(programs).resolve()
        self.reader = reader
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="vantrel-demo-"))
        self.typed_file = self.folder / "typed"
        self.environment = dict(os.environ, VANTREL_TERMINAL=str(self.folder), VANTREL_KEYBOARD="xtest")
        self.environment.pop("QT_QPA_PLATFORM", None)
        self.environment.setdefault("XDG_RUNTIME_DIR", str(self.folder))
        self.running = []
        self.own_display = False

    def start(self, command, **options):
        process = subprocess.Popen(self.command(command[0]) + command[1:], env=self.environment, text=True, start_new_session=True, **options)
        self.running.append(process)
        return process

    def command(self, name):
        """How a program is started: one of the project's, or one of the machine."""
        return [str(self.programs / name) if (self.programs / name).exists() else name]

    def ask(self, command):
        return subprocess.run(command, env=self.environment, text=True, capture_output=True, check=False)

    def open_display(self):
        if self.environment.get("DISPLAY") and self.ask(["xdpyinfo"]).returncode == 0:
            return
        # The display's number comes from the server itself, so that two demonstrations never meet.
        server = self.start(["Xvfb", "-displayfd", "1", "-screen", "0", "640x480x24", "-nolisten", "tcp", "-noreset"],
                            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        number = server.stdout.readline().strip()
        if not number:
            raise Failure("Xvfb does not start")
        self.environment["DISPLAY"] = ":" + number
        self.environment.pop("XAUTHORITY", None)
        self.own_display = True

    def open_front(self):
        """The program in front: a plain xterm."""
        self.typed_file.touch()
        self.start(["xterm", "-fa", "DejaVu Sans Mono", "-fs", "10", "-geometry", "72x12+10+10", "-title",
                    "In front", "-e", "sh", "-c", 'exec cat > "$0"', str(self.typed_file)], stderr=subprocess.DEVNULL)
        until = time.monotonic() + 15
        while time.monotonic() < until:
            found = self.ask(["xdotool", "search", "--onlyvisible", "--name", "^In front$"]).stdout.split()
            if found:
                self.front = found[-1]
                return
            time.sleep(0.1)
        raise Failure("xterm does not open")

    def focus(self):
        """Keys go to whatever is in front: that has to be the xterm."""
        if not self.own_display:
            self.ask(["xdotool", "windowactivate", "--sync", self.front])
        for _ in range(20):
            self.ask(["xdotool", "windowfocus", self.front])
            # The focus may be in a child of the xterm's window.
            focused = self.ask(["xdotool", "getwindowfocus"]).stdout.strip()
            if focused == self.front:
                return
            time.sleep(0.1)
        raise Failure("the xterm does not come to the front")

    def open_readers(self):
        process = self.start(["vantrel-readers", "--terminal", str(self.folder), "--barcode", self.reader, "--rfid", "90"],
                             stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self.readers = Lines(process)
        if not self.readers.wait(0, lambda line: line.startswith("ready"), 10):
            raise Failure("the simulated readers do not start")

    def tell(self, command):
        """A command to the simulated readers; its answer's lines."""
        mark = self.readers.mark()
        process = self.readers.process
        try:
            process.stdin.write(command + "\n")
            process.stdin.flush()
        except OSError as error:
            raise Failure("the simulated readers have ended") from error
        last = self.readers.wait(mark, lambda line: line == "ok" or line.startswith("error "), 10)
        if last is None:
            raise Failure("the simulated readers do not answer")
        lines = self.readers.since(mark)
        lines = lines[: lines.index(last)]
        return [line for line in lines if not line.startswith(("rx", "tx", "event"))] + [last]

    def trigger(self, *words):
        return self.ask([*self.command("vantrel-trigger"), *words]).returncode == 0

    def open_system(self):
        (self.folder / "DiskOnChip").mkdir()
        (self.folder / "DiskOnChip" / "Vantrel.ini").write_bytes(settings_file())
        self.event = Lines(self.start(["vantrel-watch", "--event"], stdout=subprocess.PIPE))
        self.messages = Lines(self.start(["vantrel-watch", "--messages"], stdout=subprocess.PIPE))
        self.focus()
        self.system = self.start(["vantrel"])
        # Once the readers are found and configured, a release of the trigger stops the barcode reader.
        stops = ("event command com1 OFF", "rx com1 04 E5")
        until = time.monotonic() + 60
        while time.monotonic() < until:
            mark = self.readers.mark()
            if self.trigger("up") and self.readers.wait(mark, lambda line: line.startswith(stops), 0.3):
                return
            if self.system.poll() is not None:
                raise Failure(f"vantrel has ended with code {self.system.returncode}")
            time.sleep(0.2)
        raise Failure("vantrel does not become ready")

    def read(self, rows):
        """Holds the trigger until `rows` scans were typed (at least one, if none is said); all that arrived."""
        self.focus()
        typed_before = len(self.typed(0))
        event, messages, wire = self.event.mark(), self.messages.mark(), self.readers.mark()
        until = time.monotonic() + READ_TIME
        started = ("event decoding com1 on", "event command com1 ON")
        # A press while the last scan is still being taken in does nothing: press again, like a user.
        while time.monotonic() < until:
            self.trigger("down")
            if self.readers.wait(wire, lambda line: line.startswith(started), 0.4):
                break
            self.trigger("up")
        wanted = max(rows, 1)
        quiet = 0
        while time.monotonic() < until and quiet < 3:
            arrived = min(self.typed(typed_before).count("\n"), len(self.event.since(event)))
            quiet = quiet + 1 if arrived >= wanted else 0
            time.sleep(0.1)
        self.trigger("up")
        return Arrived(
            self.typed(typed_before).splitlines(),
            [json.loads(line) for line in self.event.since(event)],
            [json.loads(line) for line in self.messages.since(messages) if '"copydata"' in line],
        )

    def typed(self, start):
        return self.typed_file.read_bytes()[start:].decode("latin-1")

    def close(self):
        # The system first: it gives everything back while the others are still there.
        for process in reversed(self.running):
            if process.poll() is None:
                process.send_signal(signal.SIGTERM)
                try:
                    process.wait(10)
                except subprocess.TimeoutExpired:
                    process.kill()
                    process.wait()
        shutil.rmtree(self.folder, ignore_errors=True)


class Arrived:
    def __init__(self, typed, event, messages):
        self.typed, self.event, self.messages = typed, event, messages


def record_text(record):
    if record is None:
        return "-"
    if record["source"] == 32:
        return f"{record['codeType']} {record['uid']}" + (f" {record['text']}" if record["text"] else "")
    return f"{record['codeType']} {record['length']:>2} {record['text']}"


class Table:
    WIDTHS = (33, 24, 29)

    def __init__(self, front):
        self.row("presented", front, "record: type, length, data")
        self.row(*("-" * width for width in self.WIDTHS))

    def row(self, *cells):
        print("  " + "  ".join(cell.ljust(width) for cell, width in zip(cells, (*self.WIDTHS, 0))).rstrip(), flush=True)

    def compare(self, kind, text, typed, event, message, expected):
        """One row; whether everything arrived as it should."""
        problems = []
        if typed != text:
            problems.append("typed differently")
        if event is None or record_text(event) != expected:
            problems.append("another record")
        if message is None or record_text(message) != expected:
            problems.append("another message" if message else "no message")
        self.row(f"{kind:<9}{text}", typed or "-", record_text(event), "" if problems else "ok")
        for problem in problems:
            print(f"    ! {problem}", flush=True)
        return not problems


def take(items, fits):
    """Removes the first item that fits and returns it; None when there is none."""
    for index, item in enumerate(items):
        if fits(item):
            return items.pop(index)
    return None


def show_labels(terminal):
    """Three labels, the first together with a tag; whether all arrived."""
    table = Table(terminal.FRONT)
    good = True
    kind, letter, uid = TAG
    terminal.tell(f"tag {letter} {uid}")
    for number, (name, identifier, code_type, data) in enumerate(LABELS[terminal.reader]):
        with_tag = number == 0
        terminal.tell(f"label {identifier} {data}")
        arrived = terminal.read(2 if with_tag else 1)
        expected = [(name, data, f"{code_type} {len(data):>2} {data}")]
        if with_tag:
            expected.append((kind, uid, f"{letter} {uid}"))
            terminal.tell("untag")
        for shown, text, record in expected:
            good &= table.compare(
                shown, text, take(arrived.typed, lambda line, text=text: line == text) or "".join(arrived.typed[:1]),
                take(arrived.event, lambda line, record=record: record_text(line) == record),
                take(arrived.messages, lambda line, record=record: record_text(line) == record), record)
        for record in arrived.event:
            print(f"    ! a record too many: {record_text(record)}")
            good = False
    print("\n  The tag was read in one press with the first label. Each record came with the event from the queue,\n"
          "  and again as WM_COPYDATA and WM_DECODE.\n")
    return good


def press(terminal):
    arrived = terminal.read(0)
    if not arrived.typed and not arrived.event:
        print("  nothing was read")
    for line in arrived.typed:
        print(f"  typed   {line}")
    for record in arrived.event:
        print(f"  record  {record_text(record)}")
    for record in arrived.messages:
        print(f"  message {record_text(record)}")


def save_picture(terminal, file):
    """The screen as a PNG file, from the dump of the X server."""
    dump = subprocess.run(["xwd", "-root", "-silent"], env=terminal.environment, capture_output=True, check=True).stdout
    header = struct.unpack(">25I", dump[:100])
    size, width, height, big_endian, bits, stride, colours = (header[i] for i in (0, 4, 5, 7, 11, 12, 19))
    pixel = bits // 8
    if pixel not in (3, 4):
        raise Failure("a screen with so few colours cannot be saved")
    image = dump[size + 12 * colours:]
    places = (pixel - 3, pixel - 2, pixel - 1) if big_endian else (2, 1, 0)
    rows = bytearray()
    for y in range(height):
        row = image[y * stride: y * stride + pixel * width]
        line = bytearray(3 * width)
        for colour, place in enumerate(places):
            line[colour::3] = row[place::pixel]
        rows += b"\0" + line

    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    picture = (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">2I5B", width, height, 8, 2, 0, 0, 0))
             + chunk(b"IDAT", zlib.compress(bytes(rows))) + chunk(b"IEND", b""))
    pathlib.Path(file).write_bytes(picture)
    print(f"  {file}: {width} x {height}")


def take_commands(terminal):
    print("Commands (help shows them):")
    while True:
        try:
            line = input("> ").strip()
        except EOFError:
            print()
            return
        word, _, rest = line.partition(" ")
        if terminal.system.poll() is not None:
            print(f"  vantrel has ended with code {terminal.system.returncode}")
            return
        try:
            if word == "quit":
                return
            if word == "help":
                print(COMMANDS)
            elif word == "press":
                press(terminal)
            elif word == "shot" and rest:
                save_picture(terminal, rest)
            elif word:
                print("".join(f"  {answer}\n" for answer in terminal.tell(line)), end="")
        except (OSError, subprocess.CalledProcessError, Failure) as error:
            print(f"  {error}")


def main():
    parser = argparse.ArgumentParser(description="Shows a simulated terminal at work.")
    parser.add_argument("--programs", required=True, help="folder of the built programs")
    parser.add_argument("--windows", help="build folder of the Windows programs: shows those, under Wine")
    parser.add_argument("reader", choices=READERS)
    options = parser.parse_args()
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(143))
    if options.windows:
        from windows_terminal import WindowsTerminal
        terminal = WindowsTerminal(options.programs, options.reader, options.windows)
    else:
        terminal = Terminal(options.programs, options.reader)
    try:
        terminal.open_display()
        where = "a display of its own" if terminal.own_display else "the display " + terminal.environment["DISPLAY"]
        print(f"A terminal with a {READERS[options.reader]} on COM1 and an RFID reader on COM2, on {where}.")
        terminal.open_front()
        terminal.open_readers()
        print("Vantrel finds and configures its readers ...", end="", flush=True)
        started = time.monotonic()
        terminal.open_system()
        print(f" ready after {time.monotonic() - started:.0f} s.\n", flush=True)
        good = show_labels(terminal)
        if sys.stdin.isatty():
            take_commands(terminal)
    except Failure as failure:
        print(f"\n{failure}", file=sys.stderr)
        good = False
    except KeyboardInterrupt:
        print()
        good = False
    finally:
        terminal.close()
    if not good:
        print("Not everything arrived as it should.", file=sys.stderr)
    return 0 if good else 1


if __name__ == "__main__":
    sys.modules["demo"] = sys.modules["__main__"]  # for the terminal with the Windows programs
    sys.exit(main())
