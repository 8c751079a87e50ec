#!/usr/bin/env python3
"""Twenty seconds of 1080p30 H.264 in a 1080p window under Xvfb: CPU and memory with the engine in a process of its own,
against the engine in the host, mpv and gst-play, in turns. Memory is that of all processes but the one that stands ready.

usage: playback.py YMRPLAY CLIP [ROUNDS]
"""

import os
import pathlib
import subprocess
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent))
import peers  # noqa: E402

ymrplay, clip = sys.argv[1:3]
rounds = int(sys.argv[3]) if len(sys.argv) > 3 else peers.ROUNDS

reader, writer = os.pipe()
server = subprocess.Popen([peers.need("Xvfb"), "-displayfd", str(writer), "-screen", "0", "1920x1080x24", "-nolisten", "tcp"],
                          pass_fds=[writer], stderr=subprocess.DEVNULL)
os.close(writer)
try:
    display = os.read(reader, 16).decode().strip()
    environment = {**os.environ, "DISPLAY": f":{display}", "QT_QPA_PLATFORM": "xcb"}
    environment.pop("WAYLAND_DISPLAY", None)
    peers.compare({
        "ymrplay": [ymrplay, "--size", "1920x1080", clip],
        "engine in host": [ymrplay, "--engine", "host", "--size", "1920x1080", clip],
        "mpv": [peers.need("mpv"), "--no-config", "--vo=x11", "--ao=null", "--geometry=1920x1080+0+0", "--no-border",
                "--no-terminal", clip],
        "gst-play": [peers.need("gst-play-1.0"), "--no-interactive", "--videosink=ximagesink", "--audiosink=fakesink",
                     clip],
    }, environment, limit=60, rounds=rounds)
finally:
    server.terminate()
    server.wait()
