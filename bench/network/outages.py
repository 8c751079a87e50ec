#!/usr/bin/env python3
"""Outages of a media server, and what players make of them: how long each waited after it had begun, and whether it came
to the end. All of them get the same server and the same film; cases run side by side, players in turns.

usage: outages.py BENCH_FETCH [CLIP SECONDS [NAME=COMMAND...]]

BENCH_FETCH reads like a player that holds nothing itself, CLIP (a file made for the web, SECONDS long) at the pace that it plays
at; without one, a minute of 4 Mbit/s. A COMMAND is a further player, with {url} and {start} (seconds) in it, which ends when the
film does; what it waited is how much longer that took, its start included. mpv is one of them when it is installed.
"""

import json
import os
import shlex
import shutil
import socket
import struct
import subprocess
import sys
import tempfile
import threading
import time

bench_fetch = sys.argv[1]
clip = sys.argv[2] if len(sys.argv) > 2 else None
duration = float(sys.argv[3]) if clip else 60.0
OUTAGE_AFTER = 5.0
if not clip:
    film = tempfile.NamedTemporaryFile(suffix=".bin")
    film.write(os.urandom(int(4e6 / 8 * duration)))
    film.flush()
    clip = film.name
size = os.path.getsize(clip)
players = dict(argument.split("=", 1) for argument in sys.argv[4:])
if len(sys.argv) > 2 and shutil.which("mpv"):
    players.setdefault("mpv", "mpv --no-config --vo=null --ao=null --no-terminal --start={start} {url}")


class Server:
    """One film at some multiple of its bitrate, with one outage and some refusals of what is not the beginning."""

    def __init__(self, factor, outage=0.0, ranges=True, refusals=0, status=503):
        self.rate = size / duration * factor
        self.outage, self.ranges, self.refusals, self.status = outage, ranges, refusals, status
        self.began = None
        self.lock = threading.Lock()
        self.requests = 0
        self.listener = socket.create_server(("127.0.0.1", 0), backlog=64)
        self.url = f"http://127.0.0.1:{self.listener.getsockname()[1]}/film{os.path.splitext(clip)[1]}"
        threading.Thread(target=self.accept, daemon=True).start()

    def is_out(self):
        return self.began is not None and 0 <= time.monotonic() - self.began - OUTAGE_AFTER < self.outage

    def accept(self):
        while True:
            try:
                connection, _ = self.listener.accept()
            except OSError:
                return
            threading.Thread(target=self.serve, args=(connection,), daemon=True).start()

    def serve(self, connection):
        with connection:
            try:
                while not self.is_out() and self.answer(connection):
                    pass
            except OSError:
                pass
            if self.is_out():  # a reset, as from a machine that knows nothing of the connection
                connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))

    def answer(self, connection):
        request = b""
        while b"\r\n\r\n" not in request:
            part = connection.recv(4096)
            if not part:
                return False
            request += part
        first = 0
        for line in request.decode("latin-1").split("\r\n"):
            if line.lower().startswith("range: bytes=") and self.ranges:
                first = int(line[13:].split("-")[0])
        with self.lock:
            self.requests += 1
            self.began = self.began or time.monotonic()
            refuse = first > size / 10 and self.refusals > 0
            self.refusals -= refuse
        if refuse:
            connection.sendall(f"HTTP/1.1 {self.status} No\r\nContent-Length: 0\r\n\r\n".encode())
            return True
        head = f"Content-Length: {size - first}\r\nETag: \"film\"\r\nContent-Type: video/mp4\r\n\r\n"
        if self.ranges:
            head = f"HTTP/1.1 206 Part\r\nContent-Range: bytes {first}-{size - 1}/{size}\r\n" + head
        else:
            head = "HTTP/1.1 200 OK\r\n" + head
        connection.sendall(head.encode())
        began, sent = time.monotonic(), 0
        with open(clip, "rb") as source:
            while first + sent < size:
                if self.is_out():
                    return False
                due = (time.monotonic() - began + 0.02) * self.rate - sent
                if due > 0:
                    sent += os.sendfile(connection.fileno(), source.fileno(), first + sent, int(due) + 1)
                time.sleep(0.01)
        return True


def run_fetch(server, start):
    at = int(size * start / duration)
    # An index at the film's beginning is read before any seek.
    done = subprocess.run([bench_fetch, server.url, str(size / duration), str(at)], capture_output=True, text=True)
    result = json.loads(done.stdout)
    return result["waited"], result["ended"] and result["bytes"] == size - at


def run_player(command, server, start):
    began = time.monotonic()
    done = subprocess.run(shlex.split(command.format(url=server.url, start=start)), stdin=subprocess.DEVNULL,
                          stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    waited = time.monotonic() - began - (duration - start)
    return waited, done.returncode == 0 and waited > -1


CASES = {}
for factor in (2, 4):
    for ranges in (True, False):
        for outage in (0.3, 2, 5, 20):
            name = f"{outage:4} s away, {factor} x the bitrate, {'ranges' if ranges else 'no ranges'}"
            CASES[name] = (dict(factor=factor, outage=outage, ranges=ranges), 0)
for status in (500, 503):
    for refusals in (1, 3):
        CASES[f"{status} to a seek, {refusals} x"] = (dict(factor=4, refusals=refusals, status=status), duration / 2)

results = {}


def run(player, name, options, start):
    server = Server(**options)
    outcome = run_fetch(server, start) if player == "fetch" else run_player(players[player], server, start)
    results[player, name] = (*outcome, server.requests)
    server.listener.close()


for player in ["fetch", *players]:
    threads = [threading.Thread(target=run, args=(player, name, *case)) for name, case in CASES.items()]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
print(f"{'':48}" + "".join(f"{player:>28}" for player in ["fetch", *players]))
for name in CASES:
    cells = [results[player, name] for player in ["fetch", *players]]
    print(f"{name:48}" + "".join(f"{'' if ended else 'NOT TO THE END ':>15}{waited:6.1f} s {requests:3} r" for waited, ended, requests in cells))
