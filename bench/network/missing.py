#!/usr/bin/env python3
"""A live stream with a segment that stays missing: whether a player plays on, and what it cost.

usage: missing.py YMRPLAY [RUNS]

Segments of 2 s, a list of the last six; one that is due some seconds after the start is never there. Each run has a stream
of its own and lasts 40 s; runs go side by side. Prints how each ended: how long the player's time stood still at most, how many media
processes died, and what it said. 1 when any of them did not play on to the end of its run.
"""

import collections
import http.server
import json
import os
import re
import socket
import subprocess
import sys
import tempfile
import threading
import time

ymrplay = sys.argv[1]
runs = int(sys.argv[2]) if len(sys.argv) > 2 else 20
SIDE_BY_SIDE = 10
SECONDS, LENGTH, WINDOW, MISSING_AFTER = 40, 2, 6, 4  # of a run; of a segment; segments; segments from the start on
work = tempfile.TemporaryDirectory()
subprocess.run(
    ["ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc2=size=320x180:rate=25", "-f", "lavfi", "-i", "sine=frequency=300",
     "-t", str(SECONDS + (WINDOW + 4) * LENGTH), "-c:v", "libx264", "-preset", "ultrafast", "-g", "50", "-pix_fmt", "yuv420p",
     "-c:a", "aac", "-f", "hls", "-hls_time", str(LENGTH), "-hls_list_size", "0",
     "-hls_segment_filename", os.path.join(work.name, "%d.ts"), os.path.join(work.name, "all.m3u8")], check=True)
began = {}
asked = collections.Counter()


class Server(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def do_GET(self):
        _, stream, name = self.path.split("/")
        since = time.monotonic() - began.setdefault(stream, time.monotonic())
        last = WINDOW - 1 + int(since / LENGTH)
        status, body = 404, b""
        if name == "live.m3u8":
            first = last - WINDOW + 1
            lines = [f"#EXTINF:{LENGTH}.0,\n{number}.ts" for number in range(first, last + 1)]
            body = "\n".join(["#EXTM3U", "#EXT-X-VERSION:3", f"#EXT-X-TARGETDURATION:{LENGTH}",
                              f"#EXT-X-MEDIA-SEQUENCE:{first}", *lines, ""]).encode()
            status = 200
        elif name == f"{WINDOW + MISSING_AFTER}.ts":
            asked[stream] += 1
        elif int(name.split(".")[0]) >= last - 2 * WINDOW and os.path.exists(os.path.join(work.name, name)):
            with open(os.path.join(work.name, name), "rb") as file:
                status, body = 200, file.read()
        self.send_response(status)
        self.send_header("Content-Type", "application/vnd.apple.mpegurl" if name.endswith("8") else "video/mp2t")
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        try:
            self.wfile.write(body)
        except OSError:
            pass

    def log_message(self, *_):
        pass


class Quiet(http.server.ThreadingHTTPServer):
    request_queue_size = 64

    def handle_error(self, *_):
        pass


server = Quiet(("127.0.0.1", 0), Server)
threading.Thread(target=server.serve_forever, daemon=True).start()
outcomes = {}


def play(number):
    url = f"http://127.0.0.1:{server.server_port}/{number}/live.m3u8"
    log = os.path.join(work.name, f"log-{number}")
    with open(log, "w") as errors:
        host = subprocess.Popen([ymrplay, "--headless", "--size", "320x180", "--events", "--log", "warning", url],
                                stdout=subprocess.PIPE, stderr=errors, text=True)
    asked_to_end = threading.Event()

    def end():
        asked_to_end.set()
        host.terminate()

    timer = threading.Timer(SECONDS, end)
    timer.start()
    ticks, words, stalls = [], [], 0
    for line in host.stdout:
        if asked_to_end.is_set():
            break
        event = json.loads(line)
        if event["event"] == "videoOnTime":
            ticks.append(time.monotonic())
        stalls += event["event"] == "videoDidBuffer" and len(ticks) > 1
        if event["event"] in ("videoOnError", "videoDidPlayFinished"):
            words.append(event.get("message", event["event"]))
    timer.cancel()
    host.communicate()
    over = time.monotonic()
    with open(log) as said:
        deaths = [line.split(": ", 2)[-1].strip() for line in said if "the media process of" in line]
    still = max((after - before for before, after in zip(ticks, ticks[1:] + [over])), default=SECONDS)
    played_on = asked_to_end.is_set() and bool(ticks) and over - ticks[-1] < 5
    outcomes[number] = played_on, still, stalls, deaths, words, asked[str(number)], host.returncode


for first in range(0, runs, SIDE_BY_SIDE):
    threads = [threading.Thread(target=play, args=(number,)) for number in range(first, min(runs, first + SIDE_BY_SIDE))]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    for number in range(first, min(runs, first + SIDE_BY_SIDE)):
        played_on, still, stalls, deaths, words, requests, status = outcomes[number]
        print(f"run {number:2}: {'played on' if played_on else 'DID NOT PLAY ON'}, stood still for {still:.1f} s at most, "
              f"{stalls} stalls, {len(deaths)} deaths {deaths or ''}, the segment asked for {requests} times, "
              f"status {status} {words or ''}", flush=True)
good = sum(outcome[0] for outcome in outcomes.values())
print(f"{good} of {runs} played on; {sum(len(outcome[3]) for outcome in outcomes.values())} media processes died; "
      f"longest standstill {max(outcome[1] for outcome in outcomes.values()):.1f} s")
sys.exit(good != runs)
