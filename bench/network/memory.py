#!/usr/bin/env python3
"""What a film of 80 Mbit/s costs in memory when it comes over HTTP, against the same film from disk.

usage: memory.py YMRPLAY [ROUNDS]

The server is as fast as loopback is. Peak proportional set sizes of the host and its media processes together, the spare one
included, in MiB; mpv beside it when it is installed.
"""

import http.server
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import threading

sys.path.insert(0, os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
import peers

ymrplay = sys.argv[1]
rounds = int(sys.argv[2]) if len(sys.argv) > 2 else 3
DURATION = 25
work = tempfile.TemporaryDirectory()
film = os.path.join(work.name, "film.mp4")
subprocess.run(
    ["ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc2=size=1280x720:rate=25,noise=alls=100:allf=t", "-f", "lavfi", "-i",
     "sine=frequency=300", "-t", str(DURATION), "-c:v", "libx264", "-preset", "ultrafast", "-g", "25", "-pix_fmt", "yuv420p",
     "-b:v", "80M", "-minrate", "80M", "-maxrate", "80M", "-bufsize", "40M", "-c:a", "aac", "-movflags", "+faststart", film],
    check=True)
size = os.path.getsize(film)


class Server(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def do_GET(self):
        wanted = self.headers.get("Range", "bytes=0-")
        first = int(wanted[6:].split("-")[0])
        self.send_response(206)
        self.send_header("Content-Type", "video/mp4")
        self.send_header("Content-Range", f"bytes {first}-{size - 1}/{size}")
        self.send_header("Content-Length", str(size - first))
        self.end_headers()
        try:
            with open(film, "rb") as source:
                while first < size and (sent := os.sendfile(self.connection.fileno(), source.fileno(), first, size - first)):
                    first += sent
        except OSError:
            self.close_connection = True

    def log_message(self, *_):
        pass


server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Server)
server.daemon_threads = True
threading.Thread(target=server.serve_forever, daemon=True).start()
url = f"http://127.0.0.1:{server.server_port}/film.mp4"
players = {"ymrplay": [ymrplay, "--headless", "--size", "320x180"]}
if shutil.which("mpv"):
    players["mpv"] = ["mpv", "--no-config", "--vo=null", "--ao=null", "--no-terminal"]
print(f"{size * 8 / DURATION / 1e6:.0f} Mbit/s, {DURATION} s")
for name, command in players.items():
    peaks = {"disk": [], "HTTP": []}
    for _ in range(rounds):
        for way, source in (("disk", film), ("HTTP", url)):
            cpu, peak, wall = peers.run([*command, source], None, 4 * DURATION)
            peaks[way].append(peak)
            print(f"  {name} {way}: {peak:.1f} MiB, {cpu:.1f} CPU s, {wall:.1f} s", file=sys.stderr)
    disk, http_ = (statistics.median(peaks[way]) for way in ("disk", "HTTP"))
    print(f"{name:8} disk {disk:6.1f} MiB  HTTP {http_:6.1f} MiB  {http_ - disk:+6.1f} MiB")
