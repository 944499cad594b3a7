# SPDX-License-Identifier: GPL-3.0-or-later
"""The window: list_bench and window_bench on a screen of their own, next to the command line."""
import contextlib
import os
import statistics
import subprocess
import time

import measure
import samples

RUNS = 7
WINDOW_RATIO = 1.3


@contextlib.contextmanager
def screen(folder):
    """An X screen without a monitor. Ends with the block."""
    read, write = os.pipe()
    process = subprocess.Popen(["Xvfb", "-displayfd", str(write), "-screen", "0", "1600x1000x24"], pass_fds=[write],
                               stderr=subprocess.DEVNULL)
    os.close(write)
    try:
        display = os.read(read, 32).decode().strip()
        runtime = folder / "runtime"
        runtime.mkdir(mode=0o700, exist_ok=True)
        yield {**os.environ, "DISPLAY": f":{display}", "QT_QPA_PLATFORM": "xcb", "XDG_RUNTIME_DIR": str(runtime)}
    finally:
        os.close(read)
        process.terminate()
        process.wait()


def rows(environment, *command):
    """The rows that a program printed. A missed target is in its row, not in the exit status here."""
    done = subprocess.run([str(part) for part in command], env=environment, capture_output=True, text=True)
    found = [line.split("\t") for line in done.stdout.splitlines() if line.count("\t") == 3]
    if not found or done.returncode not in (0, 1):
        raise RuntimeError(f"{command[0]} ended with {done.returncode}: {done.stderr[-500:]}")
    return found


def add(table, row):
    what, value, target, met = row
    table.add(what, value, target, {"": None, "yes": True, "NO": False}[met])


def milliseconds(row):
    return float(row[1].split()[0])


def two_videos(folder):
    """Full-HD videos with audio, as a camera writes them; made once."""
    made = []
    for number, source in enumerate(("testsrc2", "mandelbrot")):
        path = folder / f"full-hd-{number}.mp4"
        if not path.exists():
            subprocess.run(["ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", f"{source}=size=1920x1080:rate=30",
                            "-f", "lavfi", "-i", "sine", "-t", "10", "-c:v", "libx264", "-preset", "veryfast",
                            "-pix_fmt", "yuv420p", "-c:a", "aac", path], check=True)
        made.append(path)
    return made


def bench_window(options, table):
    programs = options.cli.parent
    for row in rows({**os.environ, "QT_QPA_PLATFORM": "offscreen"}, programs / "list_bench"):
        add(table, row)
    library = options.folder / "library"
    samples.small_library(library, 500)
    with screen(options.folder) as environment:
        bench = programs / "window_bench"
        starts = [rows(environment, bench, "frame", time.clock_gettime_ns(time.CLOCK_MONOTONIC))[0]
                  for _ in range(RUNS)]
        add(table, sorted(starts, key=milliseconds)[RUNS // 2])
        windows, lines = [], []
        for _ in range(RUNS):
            lines.append(measure.child(options.cli, "--quiet", "--json", "list", library).seconds * 1000)
            windows.append(milliseconds(rows(environment, bench, "import", library)[0]))
        ours, command = statistics.median(windows), statistics.median(lines)
        table.add("import of 3000 files with the window open", f"{ours:.0f} ms")
        table.add("the same by the command line, start and end included", f"{command:.0f} ms")
        table.add("window against command line", f"{ours / command:.2f}", f"at most {WINDOW_RATIO}",
                  ours / command <= WINDOW_RATIO)
        for row in rows(environment, bench, "select", *two_videos(options.folder)):
            add(table, row)
