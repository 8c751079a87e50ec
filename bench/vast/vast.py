#!/usr/bin/env python3
"""Documents a second, parse and all queries, against a bare SAX pass and against a JavaScript VAST parser, in turns; and
what ten times as much costs.

usage: vast.py BENCH_VAST DOCUMENTS NODE_FOLDER [ROUNDS]
"""

import pathlib
import statistics
import subprocess
import sys

ROUNDS = 5
bench, documents, node_folder = sys.argv[1:4]
rounds = int(sys.argv[4]) if len(sys.argv) > 4 else ROUNDS
peer = str(pathlib.Path(__file__).resolve().parent / "peer.mjs")


def output(*command):
    return subprocess.run(command, cwd=node_folder, stdout=subprocess.PIPE, text=True, check=True).stdout


figures = {"framework": [], "SAX pass": [], "JavaScript": []}
for number in range(rounds):
    ours, sax, *found = output(bench, "rates", f"{documents}/varied").split(maxsplit=2)
    theirs, *found_by_peer = output("node", peer, f"{documents}/varied", "2").split(maxsplit=1)
    for name, rate in zip(figures, (ours, sax, theirs)):
        figures[name].append(float(rate))
    print(f"  round {number + 1}: " + ", ".join(f"{name} {rates[-1]:.0f}/s" for name, rates in figures.items()), file=sys.stderr)

ours = statistics.median(figures["framework"])
print(f"framework found {found[0].strip()}\npeer found      {found_by_peer[0].strip()}\n")
print(f"{'':<12}{'documents/s':>12}{'framework is':>16}")
for name, rates in figures.items():
    rate = statistics.median(rates)
    note = "" if name == "framework" else f"{ours / rate:.1f} x as fast" if ours > rate else f"{rate / ours:.2f} x its time"
    print(f"{name:<12}{rate:12.0f}{note:>16}")

print("\n" + output(bench, "profiles", f"{documents}/varied", "4").strip())

print(f"\n{'':<18}{'MB':>6}{'CPU ms':>9}{'ms per MB':>11}")
for line in output(bench, "large", f"{documents}/large").splitlines():
    name, size, milliseconds = line.split()
    print(f"{name:<18}{int(size) / 1e6:6.1f}{float(milliseconds):9.1f}{float(milliseconds) / int(size) * 1e6:11.1f}")
