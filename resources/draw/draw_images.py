#!/usr/bin/env python3
"""Draws icons/vantrel.ico and icons/states.bmp. Run it after a change; its results are committed.

With --png FOLDER it also writes each image, enlarged, for looking at.
"""
import pathlib
import struct
import sys
import zlib

ICONS = pathlib.Path(__file__).resolve().parent.parent / "icons"

PALETTE = {
    ".": (0x00, 0xFF, 0x00),  # transparent
    "#": (0x3C, 0x46, 0x50),  # outline
    "-": (0x7E, 0x8A, 0x96),  # outline of what is off
    "=": (0xC4, 0xCB, 0xD2),  # body of what is off
    "+": (0x15, 0x65, 0xC0),  # what is on
    "o": (0xFF, 0xFF, 0xFF),
    "~": (0x8F, 0xB8, 0xE6),  # soft edge inside what is on
    "a": (0xC6, 0x28, 0x28),  # text cursor
}

# Switch off and on, choice not selected and selected, text, number, list.
STATES = """
...............  ...............  ...............  ...............  ...............  ...............  ...............
...............  ...............  .....-----.....  .....+++++.....  ...............  ...............  ...............
...............  ...............  ...--ooooo--...  ...++ooooo++...  ###############  ###############  .+++...........
..----------...  ..++++++++++...  ..-ooooooooo-..  ..+ooooooooo+..  #ooooooooooooo#  #ooooooooooooo#  .+++.#########.
.-=ooo======-..  .+++++++ooo++..  ..-ooooooooo-..  ..+oo~+++~oo+..  #ooo+ooooaoaoo#  #ooo+ooo+++ooo#  .+++...........
-=ooooo======-.  +++++++ooooo++.  .-ooooooooooo-.  .+oo~+++++~oo+.  #oo+o+ooooaooo#  #oo++oo+ooo+oo#  ...............
-ooooooo=====-.  ++++++ooooooo+.  .-ooooooooooo-.  .+oo+++++++oo+.  #oo+o+ooooaooo#  #ooo+oooooo+oo#  .+++...........
-ooooooo=====-.  ++++++ooooooo+.  .-ooooooooooo-.  .+oo+++++++oo+.  #o+ooo+oooaooo#  #ooo+oooo++ooo#  .+++.#########.
-ooooooo=====-.  ++++++ooooooo+.  .-ooooooooooo-.  .+oo+++++++oo+.  #o+++++oooaooo#  #ooo+ooo+ooooo#  .+++...........
-=ooooo======-.  +++++++ooooo++.  .-ooooooooooo-.  .+oo~+++++~oo+.  #o+ooo+oooaooo#  #ooo+oo+oooooo#  ...............
.-=ooo======-..  .+++++++ooo++..  ..-ooooooooo-..  ..+oo~+++~oo+..  #o+ooo+ooaoaoo#  #oo+++o+++++oo#  .+++...........
..----------...  ..++++++++++...  ..-ooooooooo-..  ..+ooooooooo+..  #ooooooooooooo#  #ooooooooooooo#  .+++.#########.
...............  ...............  ...--ooooo--...  ...++ooooo++...  ###############  ###############  .+++...........
...............  ...............  .....-----.....  .....+++++.....  ...............  ...............  ...............
...............  ...............  ...............  ...............  ...............  ...............  ...............
"""

CARD = (0x12, 0x35, 0x5B)
BAR = (0xFF, 0xFF, 0xFF)
BEAM = (0xFF, 0x3B, 0x30)

# Per size: left edges and widths of the bars, their top and bottom, the rows of the beam, the corner radius.
ICON_SIZES = {
    16: ([(3, 1), (5, 2), (8, 1), (10, 1), (12, 1)], 3, 13, (7, 9), 3),
    24: ([(4, 1), (6, 3), (10, 1), (12, 2), (16, 1), (18, 2)], 4, 20, (11, 13), 4),
    32: ([(5, 2), (8, 1), (10, 4), (16, 2), (19, 1), (22, 2), (25, 2)], 6, 26, (15, 17), 6),
    48: ([(8, 3), (12, 1), (15, 5), (22, 2), (26, 3), (31, 1), (34, 4), (39, 2)], 9, 39, (22, 25), 9),
}


def coverage(x, y, size, radius):
    """How much of pixel (x, y) a square with round corners covers, 0 to 1."""
    hits = 0
    for sub in range(64):
        px, py = x + (sub % 8 + 0.5) / 8, y + (sub // 8 + 0.5) / 8
        dx = max(radius - px, px - (size - radius), 0)
        dy = max(radius - py, py - (size - radius), 0)
        hits += dx * dx + dy * dy <= radius * radius
    return hits / 64


def blend(low, high, share):
    return tuple(round(a + (b - a) * share) for a, b in zip(low, high))


def app_icon(size):
    bars, top, bottom, beam, radius = ICON_SIZES[size]
    rows = []
    for y in range(size):
        row = []
        for x in range(size):
            colour = CARD
            if top <= y < bottom and any(left <= x < left + width for left, width in bars):
                colour = BAR
            if beam[0] <= y < beam[1]:
                colour = BEAM
            elif y in (beam[0] - 1, beam[1]):
                colour = blend(colour, BEAM, 0.45)
            row.append(colour + (round(255 * coverage(x, y, size, radius)),))
        rows.append(row)
    return rows


def ico(images):
    header = struct.pack("<HHH", 0, 1, len(images))
    entries, bodies = b"", b""
    for rows in images:
        size = len(rows)
        body = struct.pack("<IiiHHIIiiII", 40, size, size * 2, 1, 32, 0, 0, 0, 0, 0, 0)
        for row in reversed(rows):
            body += b"".join(bytes((b, g, r, a)) for r, g, b, a in row)
        for row in reversed(rows):
            bits = "".join("0" if pixel[3] else "1" for pixel in row)
            bits += "0" * (-len(bits) % 32)
            body += int(bits, 2).to_bytes(len(bits) // 8, "big")
        offset = 6 + 16 * len(images) + len(bodies)
        entries += struct.pack("<BBBBHHII", size, size, 0, 0, 1, 32, len(body), offset)
        bodies += body
    return header + entries + bodies


def bmp(rows):
    width, height = len(rows[0]), len(rows)
    body = b""
    for row in reversed(rows):
        line = b"".join(bytes((b, g, r)) for r, g, b in row)
        body += line + bytes(-len(line) % 4)
    info = struct.pack("<IiiHHIIiiII", 40, width, height, 1, 24, 0, len(body), 2835, 2835, 0, 0)
    return struct.pack("<2sIHHI", b"BM", 54 + len(body), 0, 0, 54) + info + body


def png(rows, scale):
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    lines = b""
    for row in rows:
        line = b"".join(bytes(pixel + (255,) * (4 - len(pixel))) * scale for pixel in row)
        lines += (b"\0" + line) * scale
    head = struct.pack(">IIBBBBB", len(rows[0]) * scale, len(rows) * scale, 8, 6, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", head) + chunk(b"IDAT", zlib.compress(lines))
            + chunk(b"IEND", b""))


def main():
    states = [[PALETTE[c] for c in line.replace(" ", "")] for line in STATES.split("\n") if line]
    assert len(states) == 15 and all(len(row) == 105 for row in states)
    icons = {size: app_icon(size) for size in sorted(ICON_SIZES, reverse=True)}
    (ICONS / "states.bmp").write_bytes(bmp(states))
    (ICONS / "vantrel.ico").write_bytes(ico(list(icons.values())))
    (ICONS / "vantrel.png").write_bytes(png(icons[48], 1))
    if sys.argv[1:2] == ["--png"]:
        folder = pathlib.Path(sys.argv[2])
        shown = [[p + (0 if p == PALETTE["."] else 255,) for p in row] for row in states]
        (folder / "states.png").write_bytes(png(shown, 10))
        (folder / "states-1.png").write_bytes(png(shown, 1))
        for size, rows in icons.items():
            (folder / f"icon-{size}.png").write_bytes(png(rows, 8))


if __name__ == "__main__":
    main()
