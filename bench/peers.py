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


def cpu_of(pid):
    """Seconds of processor time that a process has taken itself."""
    with open(f"/proc/{pid}/stat") as stat:
        return sum(int(ticks) for ticks in stat.read().rsplit(")", 1)[1].split()[11:13]) / os.sysconf("SC_CLK_TCK")


def is_spare(pid):
    """A media process that stands ready: it has no memory of its host's yet."""
    if not os.readlink(f"/proc/{pid}/exe").endswith("/ymr-media"):
        return False
    folder = f"/proc/{pid}/fd"
    return not any("memfd:ymr" in os.readlink(f"{folder}/{entry}") for entry in os.listdir(folder))


def memory_of(pid):
    """Proportional set size in MiB of a process tree without its spare media process, and of that."""
    totals = [0, 0]
    for member in tree_of(pid):
        try:
            if member != pid and os.readlink(f"/proc/{member}/exe") == os.readlink(f"/proc/{pid}/exe"):
                continue  # about to become another program; until then its memory is its parent's
            with open(f"/proc/{member}/smaps_rollup") as rollup:
                size = sum(int(line.split()[1]) for line in rollup if line.startswith("Pss:"))
            totals[member != pid and is_spare(member)] += size
        except OSError:
            pass
    return totals[0] / 1024, totals[1] / 1024


def run(command, environment, limit):
    """One run: (CPU seconds of the process tree, peak memory in MiB, that of its spare process, wall seconds)."""
    started = time.monotonic()
    process = subprocess.Popen(command, env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL)
    peak = spare = 0.0
    seen = {}  # processor time of each; one that nobody has waited for is in no sum of the system's
    while True:
        pid, status, usage = os.wait4(process.pid, os.WNOHANG)
        if pid:
            break
        if time.monotonic() - started > limit:
            process.kill()
            sys.exit(f"{command[0]} did not end within {limit} s")
        for member in tree_of(process.pid):
            try:
                seen[member] = cpu_of(member)
            except OSError:
                pass
        taken, ready = memory_of(process.pid)
        peak, spare = max(peak, taken), max(spare, ready if taken > 1 else 0)
        time.sleep(0.1)
    if os.waitstatus_to_exitcode(status) != 0:
        sys.exit(f"{' '.join(command)} ended with status {os.waitstatus_to_exitcode(status)}")
    return max(usage.ru_utime + usage.ru_stime, sum(seen.values())), peak, spare, time.monotonic() - started


def compare(contenders, environment, limit, rounds=ROUNDS):
    """contenders: {name: command}, ours first. Runs them in turns and prints medians and ours over each peer."""
    figures = {name: [] for name in contenders}
    for number in range(rounds):
        for name, command in contenders.items():
            cpu, peak, spare, wall = run(command, environment, limit)
            figures[name].append((cpu, peak, spare))
            print(f"  round {number + 1}: {name:<15} {cpu:6.2f} CPU s  {peak:7.1f} MiB  {wall:5.1f} s", file=sys.stderr)
    medians = {name: [statistics.median(column) for column in zip(*rows)] for name, rows in figures.items()}
    ours = next(iter(contenders))
    print(f"{'':<17}{'CPU s':>8}{'ratio':>8}{'MiB':>9}{'ratio':>8}")
    for name, (cpu, peak, spare) in medians.items():
        told = f"  and {spare:.1f} MiB that stand ready" if spare else ""
        print(f"{name:<17}{cpu:8.2f}{medians[ours][0] / cpu:8.2f}{peak:9.1f}{medians[ours][1] / peak:8.2f}{told}")
    return medians
