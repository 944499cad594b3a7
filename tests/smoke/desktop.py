# SPDX-License-Identifier: GPL-3.0-or-later
"""A desktop of its own: a screen, a window manager, a message bus with accessibility, a home folder. And the program."""
import os
import pathlib
import shutil
import signal
import subprocess
import tempfile
import time

from access import Gone

PATIENCE = 20  # seconds; a loaded machine may need them, a quiet one replies at once
WINDOW_MANAGER = """<?xml version="1.0"?>
<JWM><FocusModel>click</FocusModel><Key mask="A" key="F4">close</Key></JWM>"""


def eventually(condition, what, patience=PATIENCE):
    """Returns the first true value of `condition`, which is called until there is one; fails with `what`, a text or a
    function that returns one, after `patience` seconds."""
    end = time.monotonic() + patience
    while True:
        try:
            value = condition()
        except Gone:
            value = None
        if value:
            return value
        if time.monotonic() > end:
            raise AssertionError(f"never happened: {what() if callable(what) else what}")
        time.sleep(0.02)


class Desktop:
    """Everything that the program sees of a machine."""
    screen = "1600x1000"

    def __init__(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="clipheave-smoke-"))
        self.processes = []
        self.home = self.folder / "home"
        for name in ("home/.config", "home/.cache", "home/Videos", "run"):
            (self.folder / name).mkdir(parents=True)
        (self.folder / "run").chmod(0o700)
        self.env = {name: os.environ[name] for name in ("PATH", "ASAN_OPTIONS", "UBSAN_OPTIONS") if name in os.environ}
        self.env |= {"HOME": str(self.home), "XDG_CONFIG_HOME": str(self.home / ".config"), "LC_ALL": "C.UTF-8",
                     "XDG_CACHE_HOME": str(self.home / ".cache"), "XDG_RUNTIME_DIR": str(self.folder / "run"),
                     "XDG_DATA_HOME": str(self.home / ".local/share"), "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1",
                     "QT_QPA_PLATFORM": "xcb", "LIBGL_ALWAYS_SOFTWARE": "1", "NO_AT_BRIDGE": "0"}
        self.env["DISPLAY"] = ":" + self.first_line(["Xvfb", "-displayfd", "1", "-screen", "0", f"{self.screen}x24",
                                                     "-nolisten", "tcp", "-noreset"])
        self.manage_windows()
        self.env["DBUS_SESSION_BUS_ADDRESS"] = self.first_line(
            ["dbus-daemon", "--session", "--nofork", "--print-address=1"])
        self.start(["/usr/libexec/at-spi-bus-launcher", "--launch-immediately"])

    def manage_windows(self):
        (self.folder / "jwmrc").write_text(WINDOW_MANAGER)
        self.start(["jwm", "-f", str(self.folder / "jwmrc")])

    def start(self, command, **more):
        log = open(self.folder / "services.txt", "ab")
        process = subprocess.Popen(command, env=self.env, stderr=log, start_new_session=True,
                                   **{"stdout": log, **more})
        log.close()
        self.processes.append(process)
        return process

    def first_line(self, command):
        process = self.start(command, stdout=subprocess.PIPE)
        line = process.stdout.readline().decode().strip()
        if not line:
            raise RuntimeError(f"{command[0]} does not start: " + (self.folder / "services.txt").read_text())
        return line

    def close(self):
        for process in reversed(self.processes):
            try:
                os.killpg(process.pid, signal.SIGKILL)
            except ProcessLookupError:
                pass
            process.wait()
            if process.stdout:
                process.stdout.close()
        shutil.rmtree(self.folder, ignore_errors=True)
