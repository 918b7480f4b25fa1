#!/usr/bin/env python3
"""Makes the read sounds in sounds/: mono, 16 bit, 22.05 kHz. Run it after a change; its results are committed."""
import math
import pathlib
import struct
import wave

SOUNDS = pathlib.Path(__file__).resolve().parent.parent / "sounds"
RATE = 22050
EDGE = 0.004  # seconds in which a tone swells and fades, so that it doesn't click

# A sound is a row of tones: (seconds, start Hz, end Hz, overtones, decay per second). 0 Hz is silence.
PURE, WARM, SHARP = (1.0,), (1.0, 0.35, 0.1), (1.0, 0.0, 0.4, 0.0, 0.25)
TABLE = {
    "Default": [(0.12, 1318, 1318, WARM, 9)],
    "Hwandsw": [(0.09, 2730, 2730, SHARP, 0)],
    "MenuPop": [(0.05, 700, 1500, PURE, 0)],
    "MsgBox": [(0.10, 880, 880, WARM, 6), (0.16, 660, 660, WARM, 6)],
    "Notify": [(0.09, 1047, 1047, WARM, 8), (0.09, 1319, 1319, WARM, 8), (0.18, 1568, 1568, WARM, 8)],
    "VoicBeep": [(0.22, 1000, 1000, PURE, 0)],
    "Alarm2": [(0.07, 1760, 1760, SHARP, 0), (0.04, 0, 0, PURE, 0)] * 3,
    "Alarm3": [(0.09, 1400, 2100, SHARP, 0), (0.09, 2100, 1400, SHARP, 0)] * 2,
    "LowBatt": [(0.16, 520, 440, WARM, 2), (0.07, 0, 0, PURE, 0), (0.24, 420, 330, WARM, 2)],
}


def tone(seconds, start, end, overtones, decay):
    count = round(seconds * RATE)
    phase = 0.0
    for i in range(count):
        at = i / RATE
        phase += 2 * math.pi * (start + (end - start) * i / count) / RATE
        level = sum(share * math.sin(phase * (n + 1)) for n, share in enumerate(overtones)) / sum(overtones)
        swell = min(1.0, at / EDGE, (seconds - at) / EDGE)
        yield level * swell * math.exp(-decay * at) if start else 0.0


def main():
    for name, tones in TABLE.items():
        samples = [value for part in tones for value in tone(*part)]
        loudest = max(abs(value) for value in samples)
        with wave.open(str(SOUNDS / f"{name}.wav"), "wb") as out:
            out.setnchannels(1)
            out.setsampwidth(2)
            out.setframerate(RATE)
            out.writeframes(b"".join(struct.pack("<h", round(value / loudest * 24000)) for value in samples))


if __name__ == "__main__":
    main()
