#!/usr/bin/env python3
"""Kills media processes of a host at random moments and looks how it goes on.

  kills.py YMRPLAY PROGRAMME AD [ROUNDS] [SEED]

Each round plays the programme with a pre-roll, a mid-roll and a post-roll, with a seek and a pause, and ends one media
process (any of those there are) by SEGV, ABRT, KILL or STOP. The host has to end by itself with status 0, each ad once,
and the programme has to go on within 2 s (STOP: 4 s), at most 1 s off its place. Prints what was seen; 1 when anything
was not so."""

import http.server
import json
import os
import random
import signal
import subprocess
import sys
import threading
import time

SIGNALS = [signal.SIGSEGV, signal.SIGABRT, signal.SIGKILL, signal.SIGSTOP]
LIMIT = 90  # seconds of a round
TAG = """<VAST version="2.0"><Ad id="a"><InLine><AdSystem>b</AdSystem><AdTitle>t</AdTitle><Impression><![CDATA[{0}/i]]></Impression>
<Creatives><Creative><Linear><Duration>00:00:02</Duration><MediaFiles><MediaFile delivery="progressive" type="video/mp4"
 width="640" height="360"><![CDATA[{0}/ad.mp4]]></MediaFile></MediaFiles></Linear></Creative></Creatives></InLine></Ad></VAST>"""


class Server(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"
    film = b""

    def do_GET(self):
        here = f"http://127.0.0.1:{self.server.server_port}"
        body, kind, status = {
            "/tag": (TAG.format(here).encode(), "application/xml", 200),
            "/ad.mp4": (self.film, "video/mp4", 200),
        }.get(self.path, (b"", "text/plain", 200))
        wanted = self.headers.get("Range", "")
        if self.path == "/ad.mp4" and wanted.startswith("bytes="):
            first = int(wanted[6:].split("-")[0])
            self.send_response(206)
            self.send_header("Content-Range", f"bytes {first}-{len(body) - 1}/{len(body)}")
            body = body[first:]
        else:
            self.send_response(status)
        self.send_header("Content-Type", kind)
        self.send_header("Accept-Ranges", "bytes")
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        try:
            self.wfile.write(body)
        except OSError:
            pass

    do_HEAD = do_GET

    def log_message(self, *_):
        pass


def children(pid):
    with open(f"/proc/{pid}/task/{pid}/children") as listed:
        return [int(child) for child in listed.read().split()]


def play(ymrplay, programme, tag, dice):
    """One round: what was wrong, and how long the host stood still after the kill."""
    arguments = [ymrplay, "--headless", "--size", "320x180", "--events", "--log", "none", "--reachability-host", "127.0.0.1",
                 "--preroll", tag, "--midroll", f"3={tag}", "--postroll", tag,
                 "--key", "7=playpause", "--key", "7.5=playpause", "--key", "8.5=right", programme]
    host = subprocess.Popen(arguments, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
    chosen = SIGNALS[dice.randrange(4)]
    events, killed = [], {}

    def kill():
        time.sleep(dice.uniform(0.1, 16))
        if host.poll() is None and (there := children(host.pid)):
            victim = dice.choice(there)
            killed["at"] = time.monotonic()
            os.kill(victim, chosen)

    killer = threading.Thread(target=kill)
    killer.start()
    watchdog = threading.Timer(LIMIT, host.kill)
    watchdog.start()
    for line in host.stdout:
        events.append((time.monotonic(), json.loads(line)))
    status = host.wait()
    watchdog.cancel()
    killer.join()
    faults = [] if status == 0 else [f"status {status}: {host.stderr.read()[-300:]}"]
    names = [event["event"] for _, event in events]
    begun = sum(name == "videoAdOnStart" for name in names)
    ended = sum(name in ("videoAdOnComplete", "videoAdOnError", "videoAdOnErrorDesc") for name in names)
    if not 3 <= ended <= 6:
        faults.append(f"{begun} ads began, {ended} endings")
    if names.count("videoDidPlayFinished") != 1:
        faults.append("the programme did not end once")
    gap, at = 0, killed.get("at")
    if at:
        after = [when for when, event in events if when > at]
        gap = (after[0] - at) if after else 0
        if gap > (4.5 if chosen == signal.SIGSTOP else 2.5):  # a tick a second
            faults.append(f"stood still for {gap:.1f} s")
        before = [event["time"] for when, event in events if event["event"] == "videoOnTime" and when <= at]
        then = [event["time"] for when, event in events if event["event"] == "videoOnTime" and when > at]
        if before and then and then[0] < before[-1] - 1:
            faults.append(f"went from {before[-1]:.1f} to {then[0]:.1f}")
    return faults, chosen, gap


def main():
    ymrplay, programme, ad = sys.argv[1:4]
    rounds = int(sys.argv[4]) if len(sys.argv) > 4 else 200
    dice = random.Random(int(sys.argv[5]) if len(sys.argv) > 5 else 1)
    with open(ad, "rb") as film:
        Server.film = film.read()
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Server)
    threading.Thread(target=server.serve_forever, daemon=True).start()
    tag = f"http://127.0.0.1:{server.server_port}/tag"
    bad, longest = 0, {}
    for number in range(rounds):
        faults, chosen, gap = play(ymrplay, programme, tag, dice)
        longest[chosen.name] = max(longest.get(chosen.name, 0), gap)
        if faults:
            bad += 1
            print(f"round {number}, {chosen.name}: {'; '.join(faults)}", flush=True)
    told = ", ".join(f"{name} {seconds:.1f} s" for name, seconds in sorted(longest.items()))
    print(f"{rounds} kills, {bad} rounds not as they should be; longest until the host's next word: {told}")
    sys.exit(1 if bad else 0)


main()
