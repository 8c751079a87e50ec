#!/usr/bin/env python3
"""Outages of a media server, and what players make of them: how often each stalled, how long it waited in all after its
start (or after it asked for the place that it sought), and whether it came to the end.

usage: outages.py BENCH_FETCH YMRPLAY [WORDS]

Every case is a server of its own for each player, with the same film, the same outage and the same pace; the players run
side by side. BENCH_FETCH reads like a player that holds nothing itself. YMRPLAY runs without a screen, mpv without any
output. WORDS chooses the cases whose names contain them. Prints a table, and last what ymrplay waited over what mpv did,
of the cases that both played to the end.
"""

import json
import os
import shutil
import socket
import struct
import subprocess
import sys
import tempfile
import threading
import time

bench_fetch, ymrplay = sys.argv[1:3]
words = sys.argv[3] if len(sys.argv) > 3 else ""
DURATION = 40.0
OUTAGE_AFTER = 5.0
SIDE_BY_SIDE = 10  # cases
LIMIT = 120  # seconds of a run
NOISE = 0.5  # seconds: what players take for their first and last pictures differs by so much
SEEK_AT, SEEK_TO = 3, 33  # seconds
work = tempfile.TemporaryDirectory()
film = os.path.join(work.name, "film.mp4")
subprocess.run(
    ["ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc2=size=320x180:rate=25,noise=alls=30:allf=t", "-f", "lavfi", "-i",
     "sine=frequency=300", "-t", str(DURATION), "-c:v", "libx264", "-preset", "ultrafast", "-g", "50", "-pix_fmt", "yuv420p",
     "-b:v", "1M", "-minrate", "1M", "-maxrate", "1M", "-bufsize", "500k", "-c:a", "aac", "-movflags", "+faststart", film],
    check=True)
size = os.path.getsize(film)


class Server:
    """The film at some multiple of its bitrate, with one outage and some refusals of what is not the beginning."""

    def __init__(self, factor, outage=0.0, ranges=True, refusals=0, status=503):
        self.rate = size / DURATION * factor
        self.outage, self.ranges, self.refusals, self.status = outage, ranges, refusals, status
        self.began = None  # with the first request
        self.sought = None  # with the first one for what is not the beginning
        self.lock = threading.Lock()
        self.requests = 0
        self.listener = socket.create_server(("127.0.0.1", 0), backlog=64)
        self.url = f"http://127.0.0.1:{self.listener.getsockname()[1]}/film.mp4"
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
                connection.setsockopt(socket.SOL_SOCKET, socket.SO_SNDBUF, 64 * 1024)
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
            if first > size / 2 and not self.outage:
                self.sought = self.sought or time.monotonic()
            refuse = first > size / 2 and self.refusals > 0
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
        before, due = time.monotonic(), 16 * 1024.0
        with open(film, "rb") as source:
            while first < size:
                if self.is_out():
                    return False
                if due >= 1:
                    sent = os.sendfile(connection.fileno(), source.fileno(), first, int(due))
                    first, due = first + sent, due - sent
                time.sleep(0.01)
                now = time.monotonic()
                due = min(due + (now - before) * self.rate, self.rate)  # what nobody took is not made up for
                before = now
        return True


def fetch(server, seeks):
    """A reader without a decoder: an index at the film's beginning is read before any seek."""
    at = int(size * SEEK_TO / DURATION) if seeks else 0
    done = subprocess.run([bench_fetch, server.url, str(size / DURATION), str(at)], capture_output=True, text=True)
    result = json.loads(done.stdout)
    return None, result["waited"], result["ended"] and result["bytes"] == size - at


def play(server, seeks):
    presses = [f"--key={SEEK_AT + press / 5}=right" for press in range(3)] if seeks else []
    command = [ymrplay, "--headless", "--size", "320x180", "--events", *presses, server.url]
    host = subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
    watchdog = threading.Timer(LIMIT, host.kill)
    watchdog.start()
    stalls, last, sought, began, ended, isOver = 0, 0, 0, None, time.monotonic(), False
    for line in host.stdout:
        event, ended = json.loads(line), time.monotonic()
        stalls += event["event"] == "videoDidBuffer" and last > 0 and (sought > 0 or not seeks)  # after it began
        last = event.get("time", last)
        if event["event"] == "videoOnTime":
            began = began or ended
        if event["event"] == "videoDidSeekTo":
            sought = last
        if event["event"] == "videoDidPlayFinished":
            isOver = last > DURATION - 1
            break
    host.communicate()
    watchdog.cancel()
    return stalls, ended - (server.sought or began or ended) - (DURATION - sought), isOver


def play_mpv(server, seeks):
    address = os.path.join(work.name, f"mpv-{server.url.split(':')[2].split('/')[0]}")
    command = ["mpv", "--no-config", "--vo=null", "--ao=null", "--no-terminal", f"--input-ipc-server={address}", "--pause",
               server.url]
    host = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    watchdog = threading.Timer(LIMIT, host.kill)
    watchdog.start()
    line = socket.socket(socket.AF_UNIX)
    while host.poll() is None:
        try:
            line.connect(address)
            break
        except OSError:
            time.sleep(0.01)

    def say(*words):
        line.sendall(json.dumps({"command": words}).encode() + b"\n")

    say("observe_property", 1, "time-pos")
    say("observe_property", 2, "paused-for-cache")
    say("set_property", "pause", False)
    stalls, last, began, hasSought = 0, 0, None, False
    for text in line.makefile():
        said = json.loads(text)
        if said.get("event") == "end-file":
            break
        if said.get("event") == "playback-restart":
            began = began or time.monotonic()
        if said.get("name") == "paused-for-cache":
            stalls += bool(said.get("data")) and began is not None
        if said.get("name") == "time-pos":
            last = said.get("data") or last
        if seeks and not hasSought and last >= SEEK_AT:
            say("seek", SEEK_TO, "absolute+exact")
            hasSought = True
    ended = time.monotonic()
    host.wait()
    watchdog.cancel()
    return stalls, ended - (server.sought or began or ended) - (DURATION - (SEEK_TO if seeks else 0)), last > DURATION - 1


players = {"fetch": fetch, "ymrplay": play}
if shutil.which("mpv"):
    players["mpv"] = play_mpv
cases = {}
for factor in (2, 4):
    for ranges in (True, False):
        for outage in (0.3, 2, 5, 20):
            name = f"{outage:4} s away, {factor} x the bitrate, {'ranges' if ranges else 'no ranges'}"
            cases[name] = (dict(factor=factor, outage=outage, ranges=ranges), False)
for status, refusals in ((500, 0), (500, 1), (500, 3), (503, 1), (503, 3)):
    name = f"{status} to a seek, {refusals} x" if refusals else "nothing to a seek"
    cases[name] = (dict(factor=4, refusals=refusals, status=status), True)
cases = {name: case for name, case in cases.items() if words in name}

results = {}


def run(player, name, options, seeks):
    server = Server(**options)
    results[player, name] = (*players[player](server, seeks), server.requests)
    server.listener.close()


def cell(stalls, waited, ended, requests):
    told = "" if stalls is None else f"{stalls} stalls,"
    return f"{'' if ended else 'NOT TO THE END,'} {told}{waited:6.1f} s,{requests:3} r".rjust(38)


print(f"{'':40}" + "".join(f"{player:>38}" for player in players))
names = list(cases)
for first in range(0, len(names), SIDE_BY_SIDE):
    threads = [threading.Thread(target=run, args=(player, name, *cases[name]))
               for name in names[first:first + SIDE_BY_SIDE] for player in players]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    for name in names[first:first + SIDE_BY_SIDE]:
        print(f"{name:40}" + "".join(cell(*results[player, name]) for player in players), flush=True)
if "mpv" in players:
    ours, theirs = ([results[player, name] for name in names] for player in ("ymrplay", "mpv"))
    both = [(us[1], them[1]) for us, them in zip(ours, theirs) if us[2] and them[2]]
    worse = [name for name, us, them in zip(names, ours, theirs)  # whoever seeks away from what is here has to wait
             if them[2] and not (us[2] and us[1] <= them[1] + NOISE and (us[0] <= them[0] or cases[name][1]))]
    ended = [sum(result[2] for result in each) for each in (ours, theirs)]
    print(f"\nto the end: ymrplay {ended[0]}, mpv {ended[1]} of {len(names)}; waited where both came there: "
          f"{sum(us for us, _ in both):.1f} s / {sum(them for _, them in both):.1f} s; worse in: {', '.join(worse) or 'none'}")
