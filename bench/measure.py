# SPDX-License-Identifier: GPL-3.0-or-later
"""Runs programs and measures them; the table of results."""
import dataclasses
import os
import pathlib
import statistics
import subprocess
import time


@dataclasses.dataclass
class Child:
    seconds: float
    peak_bytes: int  # peak resident memory
    read_bytes: int  # through read calls
    output: bytes


def child(*command, output=False):
    """Runs a program to its successful end. Its counters are read while it waits to be reaped."""
    start = time.perf_counter()
    process = subprocess.Popen([str(part) for part in command], stdin=subprocess.DEVNULL,
                               stdout=subprocess.PIPE if output else subprocess.DEVNULL, stderr=subprocess.PIPE)
    text, errors = process.stdout.read() if output else b"", process.stderr.read()
    os.waitid(os.P_PID, process.pid, os.WEXITED | os.WNOWAIT)
    seconds = time.perf_counter() - start
    counters = dict(line.split(": ") for line in pathlib.Path(f"/proc/{process.pid}/io").read_text().splitlines())
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        raise RuntimeError(f"{command[0]} ended with {process.returncode}: {errors.decode(errors='replace')[-500:]}")
    return Child(seconds, usage.ru_maxrss * 1024, int(counters["rchar"]), text)


def median_seconds(runs, *commands, between=lambda: None, after=None):
    """Median times of several commands run alternately, so that each meets the same state of the machine. `after` runs
    inside the measured time."""
    times = [[] for _ in commands]
    for _ in range(runs):
        for slot, command in enumerate(commands):
            between()
            start = time.perf_counter()
            child(*command)
            if after:
                after()
            times[slot].append(time.perf_counter() - start)
    return [statistics.median(slot) for slot in times]


class Table:
    """Rows of what, value, and, where there is one, the target and whether it is met."""

    def __init__(self):
        self.rows = []

    def add(self, what, value, target="", met=None):
        self.rows.append((what, value, target, {None: "", True: "yes", False: "NO"}[met]))
        print("  ".join(str(cell) for cell in self.rows[-1] if cell), flush=True)

    def markdown(self):
        lines = ["| what | measured | target | met |", "|---|---|---|---|"]
        return "\n".join(lines + ["| " + " | ".join(row) + " |" for row in self.rows])

    def all_met(self):
        return all(row[3] != "NO" for row in self.rows)


def first_line(path, key):
    for line in pathlib.Path(path).read_text().splitlines():
        if line.startswith(key):
            return line.split(":", 1)[1].strip()
    return "unknown"


def machine(folder):
    """What the numbers depend on."""
    memory = int(first_line("/proc/meminfo", "MemTotal").split()[0]) / 1048576
    kind = subprocess.run(["stat", "-f", "-c", "%T", folder], capture_output=True, text=True).stdout.strip()
    exiftool = subprocess.run(["exiftool", "-ver"], capture_output=True, text=True).stdout.strip()
    return (f"{first_line('/proc/cpuinfo', 'model name')}, {os.cpu_count()} cores, {memory:.0f} GiB memory, file system "
            f"{kind}, Linux {os.uname().release}, exiftool {exiftool}; release build, warm cache, medians; load average "
            f"before the run {os.getloadavg()[0]:.1f} (other work on the machine slows all rows)")
