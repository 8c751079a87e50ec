"""Runs commands in turns and compares what they cost: CPU seconds and peak memory (proportional set size)."""

import os
import shutil
import statistics
import subprocess
import sys
import time

ROUNDS = 5


def need(program):
    path = shutil.which(program)
    if not path:
        sys.exit(f"{program} is not installed; scripts/bench installs what the benchmarks need")
    return path


def tree_of(pid):
    """The process and all its descendants."""
    pids = [pid]
    for parent in pids:
        try:
            for thread in os.listdir(f"/proc/{parent}/task"):
                with open(f"/proc/{parent}/task/{thread}/children") as children:
                    pids += [int(child) for child in children.read().split()]
        except OSError:
            pass
    return pids


def memory_of(pid):
    """Proportional set size in MiB of a process tree."""
    total = 0
    for member in tree_of(pid):
        try:
            with open(f"/proc/{member}/smaps_rollup") as rollup:
                total += sum(int(line.split()[1]) for line in rollup if line.startswith("Pss:"))
        except OSError:
            pass
    return total / 1024


def run(command, environment, limit):
    """One run: (CPU seconds of the whole process tree, peak memory in MiB, wall seconds)."""
    started = time.monotonic()
    process = subprocess.Popen(command, env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL)
    peak = 0.0
    while True:
        pid, status, usage = os.wait4(process.pid, os.WNOHANG)
        if pid:
            break
        if time.monotonic() - started > limit:
            process.kill()
            sys.exit(f"{command[0]} did not end within {limit} s")
        peak = max(peak, memory_of(process.pid))
        time.sleep(0.1)
    if os.waitstatus_to_exitcode(status) != 0:
        sys.exit(f"{' '.join(command)} ended with status {os.waitstatus_to_exitcode(status)}")
    return usage.ru_utime + usage.ru_stime, peak, time.monotonic() - started


def compare(contenders, environment, limit, rounds=ROUNDS):
    """contenders: {name: command}, ours first. Runs them in turns and prints medians and ours over each peer."""
    figures = {name: [] for name in contenders}
    for number in range(rounds):
        for name, command in contenders.items():
            cpu, peak, wall = run(command, environment, limit)
            figures[name].append((cpu, peak))
            print(f"  round {number + 1}: {name:<10} {cpu:6.2f} CPU s  {peak:7.1f} MiB  {wall:5.1f} s", file=sys.stderr)
    medians = {name: [statistics.median(column) for column in zip(*rows)] for name, rows in figures.items()}
    ours = next(iter(contenders))
    print(f"{'':<12}{'CPU s':>8}{'ratio':>8}{'MiB':>9}{'ratio':>8}")
    for name, (cpu, peak) in medians.items():
        print(f"{name:<12}{cpu:8.2f}{medians[ours][0] / cpu:8.2f}{peak:9.1f}{medians[ours][1] / peak:8.2f}")
    return medians
