#!/usr/bin/env python3
"""Draws what bench_scale has measured: scale_picture.py PROGRAMS [FILE.svg]

Without a file it is docs/pictures/scale.svg. The machine's name and load stand in the caption.
"""

import math
import os
import pathlib
import subprocess
import sys
import time

WIDTH, HEIGHT, LEFT, TOP, GAP = 300, 200, 60, 46, 90


def plot(at, title, under, series, logarithmic):
    """One diagram; series are (name, colour, [(x, y)])."""
    points = [point for _, _, some in series for point in some]
    scale = math.log10 if logarithmic else float
    x0, x1 = min(scale(x) for x, _ in points), max(scale(x) for x, _ in points)
    top = max(y for _, y in points) * 1.1
    parts = [f'<g transform="translate({at},{TOP})"><text x="0" y="-14" class="title">{title}</text>',
             f'<path d="M0 0V{HEIGHT}H{WIDTH}" class="axis"/>',
             f'<text x="{WIDTH / 2}" y="{HEIGHT + 34}" text-anchor="middle">{under}</text>']
    for step in range(5):
        y = HEIGHT - step * HEIGHT / 4
        parts.append(f'<path d="M0 {y}H{WIDTH}" class="line"/>'
                     f'<text x="-6" y="{y + 4}" text-anchor="end">{top * step / 4:,.0f}</text>')
    shown = sorted({x for x, _ in points})
    for x in shown if len(shown) < 8 else shown[3::4]:
        parts.append(f'<text x="{(scale(x) - x0) / (x1 - x0) * WIDTH:.1f}" y="{HEIGHT + 16}" '
                     f'text-anchor="middle">{x:,}</text>')
    for number, (name, colour, some) in enumerate(series):
        road = " ".join(f"{(scale(x) - x0) / (x1 - x0) * WIDTH:.1f},{HEIGHT - y / top * HEIGHT:.1f}" for x, y in some)
        parts.append(f'<polyline points="{road}" fill="none" stroke="{colour}" stroke-width="2"/>'
                     f'<text x="10" y="{14 + 15 * number}" fill="{colour}">{name}</text>')
    return "".join(parts) + "</g>"


def main(programs, target):
    rows = {}
    with subprocess.Popen([str(pathlib.Path(programs, "bench_scale"))], stdout=subprocess.PIPE, text=True) as bench:
        for line in bench.stdout:
            print(line, end="", flush=True)
            kind, *numbers = line.strip().split(",")
            rows.setdefault(kind, []).append([float(number) for number in numbers])
    if bench.returncode:
        sys.exit(bench.returncode)

    def series(kind, column):
        return [(int(row[0]), row[column]) for row in rows[kind]]
    blue, red, grey = "#1f5fa8", "#b3372f", "#777777"
    step = WIDTH + GAP
    diagrams = [
        plot(LEFT, "Microseconds by length", "characters of the label",
             [("median", blue, series("length", 1)), ("processor", grey, series("length", 3))], True),
        plot(LEFT + step, "Microseconds by programs that listen", "programs",
             [("median", blue, series("listeners", 1)), ("median, one hangs", red, series("listeners-hanging", 1))], False),
        plot(LEFT + 2 * step, "Over 100,000 scans", "scans so far",
             [("microseconds, median", blue, series("scans", 1)),
              ("memory, MB", red, [(x, kilobytes / 1024) for x, kilobytes in series("scans", 4)])], False)]
    preset = pathlib.Path(programs).resolve().parent.name
    caption = (f"Preset {preset}, {time.strftime('%Y-%m-%d')}, {os.cpu_count()} processors, load {os.getloadavg()[0]:.1f}; queue, event, "
               "broadcast and keys to a trace; 200 scans a point, in the last diagram 5,000; memory is what the whole "
               "measuring program holds")
    target.write_text(
        f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {LEFT + 3 * step} {TOP + HEIGHT + 80}" font-size="12" '
        'font-family="sans-serif"><style>.axis{fill:none;stroke:#333}.line{stroke:#ddd}.title{font-size:14px;'
        f'font-weight:bold}}</style><rect width="100%" height="100%" fill="white"/>{"".join(diagrams)}'
        f'<text x="{LEFT}" y="{TOP + HEIGHT + 64}">{caption}</text></svg>\n', encoding="utf-8")


ROOT = pathlib.Path(__file__).resolve().parents[1]
main(sys.argv[1], pathlib.Path(sys.argv[2]) if len(sys.argv) > 2 else ROOT / "docs/pictures/scale.svg")
