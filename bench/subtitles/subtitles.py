#!/usr/bin/env python3
"""Reading 100,000 cues, whole processes in turns, against ffmpeg on the same file; what ten times as much costs; a
tick's look-up; and the refresh of a frame.

usage: subtitles.py BENCH_SUBTITLES BENCH_REFRESH YMRSRT FOLDER
"""

import pathlib
import resource
import statistics
import subprocess
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent))
from peers import ROUNDS, need

bench, refresh, ymrsrt, folder = sys.argv[1:5]
pathlib.Path(folder).mkdir(parents=True, exist_ok=True)
files = {}
for cues in (10_000, 100_000, 1_000_000):
    files[cues] = f"{folder}/{cues}.srt"
    subprocess.run([bench, "write", files[cues], str(cues)], check=True)


def cost(command):
    """Wall and CPU milliseconds of one run. ffmpeg has nothing to write and says so with its status, after reading."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    started = time.perf_counter()
    subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    wall = time.perf_counter() - started
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return wall * 1000, (after.ru_utime - before.ru_utime + after.ru_stime - before.ru_stime) * 1000


hundred = files[100_000]
contenders = {
    "reader": [bench, "read", hundred],
    "ffmpeg": [need("ffmpeg"), "-nostdin", "-i", hundred, "-f", "null", "-"],
    "ymrsrt --at": [ymrsrt, "--at", "100000", hundred],
    "ymrsrt --json": [ymrsrt, "--json", hundred],
}
figures = {name: [] for name in contenders}
for _ in range(ROUNDS):
    for name, command in contenders.items():
        figures[name].append(cost(command))
medians = {name: [statistics.median(column) for column in zip(*rows)] for name, rows in figures.items()}
print(f"100,000 cues{'ms':>10}{'ratio':>8}{'CPU ms':>9}{'ratio':>8}")
for name, (wall, cpu) in medians.items():
    print(f"{name:<14}{wall:8.1f}{wall / medians['ffmpeg'][0]:8.2f}{cpu:9.1f}{cpu / medians['ffmpeg'][1]:8.2f}")

print(f"\n{'cues':>9}{'MB':>8}{'CPU ms':>9}{'ns a cue':>10}")
for line in subprocess.run([bench, "grow", *files.values()], stdout=subprocess.PIPE, text=True, check=True).stdout.splitlines():
    cues, size, milliseconds = line.split()
    print(f"{int(cues):9}{int(size) / 1e6:8.1f}{float(milliseconds):9.1f}{float(milliseconds) / int(cues) * 1e6:10.0f}")

last, first, none = subprocess.run([bench, "tick", hundred], stdout=subprocess.PIPE, text=True, check=True).stdout.split()
print(f"\na look-up among 100,000 cues: the last one {last} us, the first one {first} us, none {none} us")

alone, told = subprocess.run([refresh], stdout=subprocess.PIPE, text=True, check=True).stdout.split()
print(f"a refresh a frame: {alone} us of CPU without labels, {told} us with a delegate")
