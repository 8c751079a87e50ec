#!/usr/bin/env python3
"""Runs every kind of load, each some times in a host of its own, and sums up: did a host die, did anything go wrong, and
how many media processes died on the way, which the host has to live through.

usage: stress.py BENCH_STRESS SAMPLES [RUNS] [ROUNDS] [MODE...]
"""

import collections
import re
import subprocess
import sys

program, samples = sys.argv[1:3]
runs, rounds = (int(argument) for argument in (sys.argv[3:5] + ["10", "100"][len(sys.argv[3:5]):]))
failed = False
for mode in sys.argv[5:] or ["early", "cut", "end", "seek", "startat"]:
    crashes, faults, deaths, words = 0, 0, 0, collections.Counter()
    for run in range(runs):
        try:
            done = subprocess.run([program, mode, samples, str(rounds), str(run + 1)], capture_output=True, text=True, timeout=900)
            status, said = done.returncode, done.stdout + done.stderr
        except subprocess.TimeoutExpired as late:
            status, said = "none within 15 min", (late.stdout or b"").decode()
        last = re.search(r"(\d+) faults, (\d+) deaths", said)
        if last is None or status not in (0, 1):
            crashes += 1
            print(f"{mode}, run {run + 1}: the host ended with status {status}\n{said[-500:]}", flush=True)
            continue
        faults += int(last[1])
        deaths += int(last[2])
        words.update(f"run {run + 1}: {line}" for line in said.splitlines() if line.startswith(("fault:", "the media process", "ymr-media")))
    failed = failed or crashes > 0 or faults > 0
    print(f"{mode}: {runs} runs of {rounds}; {crashes} hosts died, {faults} faults, {deaths} media processes died", flush=True)
    for line, count in words.most_common(20):
        print(f"  {count} x {line}", flush=True)
sys.exit(failed)
