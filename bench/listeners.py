"""Programs that listen to a terminal's broadcasts: listeners.py TERMINAL COUNT HANGING. All answer, but for as many as
hang: these take a message and never answer. Ends when its standard input does."""

import os
import selectors
import socket
import sys

terminal, count, hanging = sys.argv[1], int(sys.argv[2]), int(sys.argv[3])
os.chdir(os.path.join(terminal, "windows"))
wake = selectors.DefaultSelector()
wake.register(sys.stdin, selectors.EVENT_READ, None)
for number in range(count):
    listening = socket.socket(socket.AF_UNIX)
    listening.bind(f".listener{number}")
    listening.listen(16)
    listening.setblocking(False)
    os.rename(f".listener{number}", f"listener{number}")
    wake.register(listening, selectors.EVENT_READ, ("listening", number < hanging))
print("ready", flush=True)
while True:
    for key, _ in wake.select():
        if key.data is None:
            sys.exit(0)
        kind, hangs = key.data
        if kind == "listening":
            caller, _ = key.fileobj.accept()
            wake.register(caller, selectors.EVENT_READ, ("caller", hangs))
        elif lines := key.fileobj.recv(65536).count(b"\n"):
            if not hangs:
                key.fileobj.sendall(b'{"result":1}\n' * lines)
        else:
            wake.unregister(key.fileobj)
            key.fileobj.close()
