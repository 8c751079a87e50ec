#!/usr/bin/env python3
"""Kills media processes of hosts at random moments and looks how the hosts go on.

usage: kills.py YMRPLAY [KILLS] [SEED] [HOSTS AT A TIME]

Each host plays a minute with a pre-roll, four mid-rolls and a post-roll, with a pause and seeks back. Every few seconds one of
its media processes, whichever, is ended by SEGV, ABRT or KILL, or stopped. Of each host is asked: it ends by itself with
status 0; each ad that began had one ending, and no more failed than were killed; the programme plays to its end, at most
1 s off its place and within 2 s (STOP: 4 s) after each kill; its threads, descriptors and memory do not grow; no process
of its stays. Prints what was not so, and how long it took to go on; status 1 when anything was not so."""

import collections
import concurrent.futures
import http.server
import json
import os
import pathlib
import random
import signal
import statistics
import subprocess
import sys
import tempfile
import threading
import time

SIGNALS = [signal.SIGSEGV, signal.SIGABRT, signal.SIGKILL, signal.SIGSTOP]
MIDROLLS = [12, 24, 36, 48]
BREAKS = len(MIDROLLS) + 2
# The pause is where no ad can be, however long the pre-roll was: there the key would be the ad's.
KEYS = ["7.2=playpause", "8.7=playpause", "10.6=left", "31=left", "52=left", "75=left"]
LIMIT = 300  # seconds of a host
TICK = 0.25  # how late a tick of the host may be on a machine that does other things too
# A third death within a minute and so many seconds of media is for good, and none of this script's. A seek may be under
# way: then the place is another one.
NEAR, SEEK, MINUTE = 6, 10, 65
TAG = """<VAST version="2.0"><Ad id="a"><InLine><AdSystem>b</AdSystem><AdTitle>t</AdTitle><Impression><![CDATA[{0}/i]]></Impression>
<Creatives><Creative><Linear><Duration>00:00:04</Duration><MediaFiles><MediaFile delivery="progressive" type="video/mp4"
 width="640" height="360"><![CDATA[{0}/ad.mp4]]></MediaFile></MediaFiles></Linear></Creative></Creatives></InLine></Ad></VAST>"""

Event = collections.namedtuple("Event", "at name time")
Kill = collections.namedtuple("Kill", "at signal role moment")
Sample = collections.namedtuple("Sample", "threads descriptors memory")


class Server(http.server.BaseHTTPRequestHandler):
    """The tag and its film, by ranges; a tracker that answers all else."""
    protocol_version = "HTTP/1.1"
    film = b""

    def do_GET(self):
        here = f"http://127.0.0.1:{self.server.server_port}"
        body = {"/tag": TAG.format(here).encode(), "/ad.mp4": self.film}.get(self.path, b"")
        wanted = self.headers.get("Range", "")
        first = int(wanted[6:].split("-")[0]) if self.path == "/ad.mp4" and wanted.startswith("bytes=") else None
        self.send_response(200 if first is None else 206)
        if first is not None:
            self.send_header("Content-Range", f"bytes {first}-{len(body) - 1}/{len(body)}")
            body = body[first:]
        self.send_header("Content-Type", {"/tag": "application/xml", "/ad.mp4": "video/mp4"}.get(self.path, "text/plain"))
        self.send_header("Accept-Ranges", "bytes")
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        try:
            self.wfile.write(body)
        except OSError:
            pass

    def log_message(self, *_):
        pass


def children(pid):
    try:
        return [int(child) for child in pathlib.Path(f"/proc/{pid}/task/{pid}/children").read_text().split()]
    except OSError:
        return []


def is_there(pid):
    try:
        return pathlib.Path(f"/proc/{pid}/stat").read_text().rsplit(")", 1)[1].split()[0] != "Z"
    except OSError:
        return False


def role(pid, programme):
    """What a media process is there for: the programme's has its file open, a spare one has no memory of its host's."""
    names = []
    for entry in pathlib.Path(f"/proc/{pid}/fd").iterdir():
        try:
            names.append(os.readlink(entry))
        except OSError:
            pass
    if programme in names:
        return "programme"
    return "ad" if any("memfd:ymr" in name for name in names) else "spare"


def sample(pid):
    rollup = pathlib.Path(f"/proc/{pid}/smaps_rollup").read_text().splitlines()
    memory = next(int(line.split()[1]) for line in rollup if line.startswith("Pss_Anon:"))
    return Sample(len(os.listdir(f"/proc/{pid}/task")), len(os.listdir(f"/proc/{pid}/fd")), memory / 1024)


class Host:
    """One host from its start to its end, what it said, and what was done to it."""

    def __init__(self, ymrplay, programme, tag, dice):
        self.programme, self.dice = programme, dice
        arguments = [ymrplay, "--headless", "--size", "320x180", "--events", "--reachability-host", "127.0.0.1",
                     "--preroll", tag, "--postroll", tag]
        for second in MIDROLLS:
            arguments += ["--midroll", f"{second}={tag}"]
        for key in KEYS:
            arguments += ["--key", key]
        self.process = subprocess.Popen(arguments + [programme], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        self.events, self.kills, self.samples, self.seen = [], [], [], set()
        self.place, self.is_playing, self.is_ad, self.breaks = 0.0, False, False, 0

    def run(self, wanted):
        """Plays, with at most so many kills."""
        killer = threading.Thread(target=self.kill, args=[wanted])
        killer.start()
        watchdog = threading.Timer(LIMIT, self.process.kill)
        watchdog.start()
        errors = []
        reader = threading.Thread(target=lambda: errors.append(self.process.stderr.read()))
        reader.start()
        for line in self.process.stdout:
            said = json.loads(line)
            self.note(Event(time.monotonic(), said["event"], said.get("time")))
        status = self.process.wait()
        watchdog.cancel()
        killer.join()
        reader.join()
        time.sleep(0.5)
        faults = [f"status {status}: {errors[0][-2000:]}"] if status else []
        faults += [f"process {pid} has stayed" for pid in self.seen if is_there(pid)]
        return faults + self.faults_of_ads() + self.faults_of_programme() + self.growth()

    def note(self, event):
        self.events.append(event)
        self.is_playing = {"videoOnPlay": True, "videoOnPause": False}.get(event.name, self.is_playing)
        self.is_ad = {"videoAdOnStart": True, "videoAdOnComplete": False, "videoAdOnError": False}.get(event.name, self.is_ad)
        self.breaks += event.name == "videoAdOnRequest"
        if event.name in ("videoOnTime", "videoDidSeekTo"):
            self.place = event.time

    def moment(self):
        if self.is_ad:
            return {1: "pre-roll", BREAKS: "post-roll"}.get(self.breaks, "mid-roll")
        if not self.is_playing:
            return "pause" if self.place else "start"
        return "seek" if self.events[-1].name == "videoDidSeekTo" else "end" if self.place > 57 else "playing"

    def kill(self, wanted):
        places = []
        while len(self.kills) < wanted and self.process.poll() is None:
            time.sleep(self.dice.uniform(2.5, 4.5) if self.kills else self.dice.uniform(0.05, 3))
            there = children(self.process.pid)
            self.seen.update(there)
            try:
                if self.is_playing and not self.is_ad and self.kills:
                    self.samples.append(sample(self.process.pid))
                roles = {pid: role(pid, self.programme) for pid in there}
                victim = self.dice.choice([pid for pid in there if roles[pid] == "ad"] or there)
                what = roles[victim]
                if what == "programme":
                    near = [place for at, place in places if time.monotonic() - at < MINUTE and
                            any(abs(place - self.place + sought) < NEAR for sought in (-SEEK, 0, SEEK))]
                    if len(near) >= 2:
                        continue
                    places.append((time.monotonic(), self.place))
                chosen = self.dice.choice(SIGNALS)
                self.kills.append(Kill(time.monotonic(), chosen, what, self.moment()))
                os.kill(victim, chosen)
            except (OSError, IndexError, StopIteration):
                continue

    def faults_of_ads(self):
        faults = []
        names = [event.name for event in self.events]
        ads = [name for name in names if name in ("videoAdOnStart", "videoAdOnComplete", "videoAdOnError")]
        begun, ends = ads[::2], ads[1::2]
        if begun != ["videoAdOnStart"] * BREAKS or len(ends) != BREAKS or "videoAdOnStart" in ends:
            faults.append(f"{BREAKS} breaks: {' '.join(ads)}")
        failed, killed = ends.count("videoAdOnError"), sum(kill.role != "programme" for kill in self.kills)
        if failed > killed or names.count("videoAdOnErrorDesc") != failed:
            faults.append(f"{failed} ads failed, {killed} were killed")
        return faults

    def faults_of_programme(self):
        """Every tick of the programme is the next second; what it is late is what it stood still."""
        names = [event.name for event in self.events]
        faults = [] if names.count("videoDidPlayFinished") == 1 else ["the programme did not end once"]
        faults += ["the programme failed"] * names.count("videoOnError")
        self.stalls = []
        before, since, told = None, None, 0  # the last place, from when on it ought to have gone on, the last tick
        said = [event for event in self.events if event.name in ("videoOnPause", "videoOnPlay", "videoOnTime", "videoDidSeekTo")]
        for last, event, after in zip(said[:1] + said, said, said[1:] + said[-1:]):
            # A stall is told by a pause that ends at once: it goes on from where it was.
            if {last.name, event.name} == {"videoOnPause", "videoOnPlay"} and event.at - last.at < 0.05:
                continue
            if {after.name, event.name} == {"videoOnPause", "videoOnPlay"} and after.at - event.at < 0.05:
                continue
            if event.name == "videoOnPause":
                before = event.time
            elif event.name == "videoOnPlay":
                since = event.at
            elif event.name in ("videoOnTime", "videoDidSeekTo"):
                is_seek = event.name == "videoDidSeekTo"
                kills = [kill for kill in self.kills if told - 4 < kill.at < event.at]
                limit = max([4 if kill.signal == signal.SIGSTOP else 2 for kill in kills], default=0.5) + TICK
                moved = 0 if is_seek or before is None else event.time - before
                if not 0 <= moved <= 2:
                    faults.append(f"from {before:.1f} to {event.time:.1f} s")
                stalled = 0 if before is None else event.at - since - moved
                if is_seek:  # the key's own time is in it
                    stalled = max((event.at - kill.at - 1 for kill in kills if before is not None and kill.at > told), default=0)
                if kills and kills[-1].role == "programme" and kills[-1].at > told > 0:
                    self.stalls.append((kills[-1].signal.name, max(0, stalled)))
                if stalled > limit:
                    faults.append(f"stood still for {stalled:.1f} s at {event.time:.1f} s, {[kill.signal.name for kill in kills]}")
                before, since, told = event.time, event.at, event.at
        return faults

    def growth(self):
        """Of the host, between the first third of what was seen and the last."""
        third = len(self.samples) // 3
        if third < 2:
            return []
        first, last = ([statistics.median(values) for values in zip(*part)]
                       for part in (self.samples[:third], self.samples[-third:]))
        self.grown = [late - early for early, late in zip(first, last)]
        bounds = Sample(threads=2, descriptors=3, memory=3)
        return [f"{name} grew from {early:.1f} to {late:.1f}"
                for name, early, late, bound in zip(Sample._fields, first, last, bounds) if late - early > bound]


def clip(name, seconds, size):
    subprocess.run(["ffmpeg", "-nostdin", "-hide_banner", "-loglevel", "error", "-y", "-f", "lavfi", "-i",
                    f"testsrc2=size={size}:rate=25:duration={seconds}", "-f", "lavfi", "-i", f"sine=duration={seconds}",
                    "-c:v", "libx264", "-preset", "veryfast", "-pix_fmt", "yuv420p", "-g", "50", "-c:a", "aac",
                    "-movflags", "+faststart", name], check=True)


def main():
    ymrplay = sys.argv[1]
    wanted, seed, together = (int(given) for given in (sys.argv[2:] + ["200", "1", "3"][len(sys.argv) - 2:]))
    with tempfile.TemporaryDirectory() as folder:
        programme = f"{folder}/programme.mp4"
        clip(programme, 60, "320x180")
        clip(f"{folder}/ad.mp4", 4, "640x360")
        Server.film = pathlib.Path(f"{folder}/ad.mp4").read_bytes()
        server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Server)
        threading.Thread(target=server.serve_forever, daemon=True).start()
        tag = f"http://127.0.0.1:{server.server_port}/tag"
        done, bad, number, stalls = 0, 0, 0, collections.defaultdict(list)
        counted, grown = collections.Counter(), []
        with concurrent.futures.ThreadPoolExecutor(together) as pool:
            while done < wanted:
                hosts = [Host(ymrplay, programme, tag, random.Random(seed * 1000 + number + one)) for one in range(together)]
                share = -(-(wanted - done) // together)
                for host, faults in zip(hosts, pool.map(lambda host: host.run(share), hosts)):
                    done += len(host.kills)
                    bad += bool(faults)
                    for kill in host.kills:
                        counted.update([kill.role, kill.signal.name, kill.moment])
                    for name, stalled in host.stalls:
                        stalls[name].append(stalled)
                    grown += [getattr(host, "grown", [0, 0, 0])]
                    print(f"host {number}: {len(host.kills)} kills, {'; '.join(faults) or 'as it should be'}", flush=True)
                    number += 1
        server.shutdown()
    print(f"{done} kills ({', '.join(f'{name}: {count}' for name, count in sorted(counted.items()))})")
    for name, values in sorted(stalls.items()):
        print(f"the programme stood still after {name}: median {statistics.median(values):.2f} s, at most {max(values):.2f} s")
    print("a host grew by at most {:.0f} threads, {:.0f} descriptors, {:.1f} MiB".format(*map(max, zip(*grown))))
    print(f"{bad} of {number} hosts not as they should be")
    sys.exit(1 if bad else 0)


main()
