"""What stands in for the program where there is none: a script that types what a scan engine reads.

  script.py PORT RATE

Reads a packet to 30 ms of silence, looks at its checksum, acknowledges it and has xdotool type its data and a return.
Measured beside the program by bench_speed.
"""

import subprocess
import sys

import serial

ACKNOWLEDGEMENT = bytes.fromhex("04D00400FF28")

with serial.Serial(sys.argv[1], int(sys.argv[2])) as port:
    print("ready", flush=True)
    while True:
        port.timeout = None
        packet = port.read(1)
        port.timeout = 0.03
        while more := port.read(max(1, port.in_waiting)):
            packet += more
        length = packet[0]
        if len(packet) < length + 2 or (sum(packet[:length]) + int.from_bytes(packet[length:length + 2], "big")) & 0xFFFF:
            continue
        port.write(ACKNOWLEDGEMENT)
        subprocess.run(["xdotool", "type", "--delay", "0", packet[5:length].decode("ascii") + "\n"], check=False)
