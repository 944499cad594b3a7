# SPDX-License-Identifier: GPL-3.0-or-later
"""The window under test, as a user and assistive technology meet it, and the frame of its tests."""
import pathlib
import shutil
import subprocess
import sys
import time
import unittest

import access
import hands
from desktop import eventually

COLUMNS = ("Media Name", "Media Size", "Media Length", "Media Kind", "Media Artist", "Media Album",
           "Media Created Date")
COUNTS = {"Media list": len(COLUMNS), "Tasks": 6, "Current and new names": 3}  # columns of the tables


class Program:
    def __init__(self, desktop, binary, arguments=(), **env):
        self.desktop = desktop
        self.log = desktop.folder / "stderr.txt"
        with open(self.log, "wb") as log:
            self.process = subprocess.Popen([binary, *map(str, arguments)], env=desktop.env | env, stderr=log,
                                            stdout=log, stdin=subprocess.DEVNULL)
        self.tables = {}
        self.bus = access.connect(desktop.env["DBUS_SESSION_BUS_ADDRESS"])
        self.hands = hands.Hands(desktop.env["DISPLAY"])
        self.tree = eventually(self.registered, lambda: "a window; " + self.log.read_text(errors="replace"))
        self.window = eventually(lambda: self.tree.find("frame", "ClipHeave"), "the main window")
        eventually(lambda: "active" in self.window.states, "the main window is active")

    def registered(self):
        return next(iter(access.programs(self.bus)), None)

    def close(self):
        """Ends the program the hard way and drops the connections."""
        self.process.kill()
        self.process.wait()
        self.hands.display.close()
        eventually(lambda: not self.registered(), "the program has left the bus")
        self.bus.close()

    # What is there

    def get(self, role, name=None):
        return eventually(lambda: self.tree.find(role, name), lambda: f"{role} '{name}' is shown")

    def focused(self):
        """What has the focus; the innermost where menus report their owners too. Cells are left out: the current one
        reports the focus whether its table has it or not."""
        nodes = [node for node in self.tree.shown() if "focused" in node.states]
        return nodes[-1] if nodes else None

    def has_focus(self, role, name=None):
        node = self.focused()
        return node and node.role == role and name in (None, node.name) and node

    def dialog(self, name=None):
        return self.get("dialog", name)

    def table(self, name):
        if name not in self.tables:
            self.tables[name] = self.get("table", name)
        return self.tables[name]

    def cells(self, table="Media list"):
        """The nodes of a table, row by row: after the corner and the headers, each row has a head and its cells."""
        nodes = self.table(table).children
        step = COUNTS[table] + 1
        return [nodes[i + 1:i + step] for i in range(step, len(nodes), step)]

    def rows(self, table="Media list"):
        return [[node.name for node in row] for row in self.cells(table)]

    def names(self):
        return [row[0].name for row in self.cells()]

    def cell(self, name):
        return next(row[0] for row in self.cells() if row[0].name == name)

    def fact(self, text):
        return self.get("label", text)

    # What a user does

    def click(self, role, name=None):
        self.click_on(self.get(role, name))

    def click_on(self, node):
        """Clicks once it stands still: panels slide."""
        def still():
            before = node.extents
            time.sleep(0.04)
            return node.extents == before
        eventually(still, f"{node} stands still")
        self.hands.click(node.centre)

    def open_by_panel(self, path, key="Ctrl+o"):
        self.hands.key(key)
        field = eventually(lambda: self.dialog("Open") and self.has_focus("text"), "the panel takes a name")
        self.hands.type(str(path))
        eventually(lambda: field.text == str(path), lambda: f"{field.text} is {path}")
        self.hands.key("Return")
        eventually(lambda: not self.tree.find("dialog", "Open"), "the panel is closed")

    def add(self, path, count):
        """Adds a file or folder that brings the list to `count` rows."""
        self.open_by_panel(path)
        eventually(lambda: len(self.names()) == count, lambda: f"{count} rows, but {self.names()}")

    def select(self, name):
        self.click_on(self.cell(name))
        self.fact(f"File Name: {name}")

    def enter(self, field, text, paste=False):
        """Replaces the text of a field of the detail pane."""
        node = self.get("text", field)
        self.click_on(node)
        eventually(lambda: self.has_focus("text", field), f"{field} has the focus")
        self.type_over(node, text, paste)

    def type_over(self, node, text, paste=False):
        """Replaces the text of the node, which has the focus."""
        self.hands.key("Ctrl+a")
        if paste:
            self.hands.copy(text)
            self.hands.key("Ctrl+v")
        else:
            self.hands.type(text)
        eventually(lambda: node.text == text, lambda: f"{node.text} is {text}")

    def escape(self, what):
        self.hands.key("Escape")
        eventually(lambda: not self.tree.find("dialog"), f"Escape closes {what}")

    def tab_to(self, node):
        for _ in range(40):
            if "focused" in node.states:
                break
            self.hands.key("Tab")
            eventually(self.focused, "something has the focus")

    def open_activity(self):
        self.hands.key("Ctrl+j")
        self.get("table", "Tasks")

    def tasks(self):
        """(name, result) of the jobs in the activity panel, the newest first."""
        return [(row[1], row[4]) for row in self.rows("Tasks")]

    def task_done(self, name, result):
        eventually(lambda: (name, result) in self.tasks(), lambda: f"{name}: {result}, but {self.tasks()}")

    def task_files(self):
        """What the activity panel says about the files of the newest job."""
        self.click_on(self.cells("Tasks")[0][1])
        files = self.get("list", "Files")
        return eventually(lambda: [node.name for node in files.children], "files of the job")


class WindowTest(unittest.TestCase):
    """Each test has a window of its own, as after a first start."""
    programs = pathlib.Path(".")
    arguments, environment = (), {}
    # Lines of the activity log, which the console shows too, and what newer releases of Qt warn of when assistive
    # technology asks for a widget that has just gone.
    noise = ("urls==", "No working sound device", "Could not find accessible on path")

    @classmethod
    def use(cls, desktop):
        """Sets the desktop of the tests and writes the sample library there."""
        cls.desktop, cls.demo = desktop, desktop.folder / "demo"
        subprocess.run([cls.programs / "clipheave-cli", "demo", cls.demo], env=desktop.env, check=True,
                       stdout=subprocess.DEVNULL)

    def setUp(self):
        shutil.rmtree(self.desktop.home / ".config/clipheave", ignore_errors=True)
        self.prepare()
        self.user = Program(self.desktop, self.programs / "clipheave", self.arguments, **self.environment)
        self.addCleanup(self.end)

    def prepare(self):
        pass

    def type_storage_folder(self, name):
        """Opens the preferences and types a folder of the desktop, whose path is returned."""
        self.user.hands.key("Ctrl+comma")
        self.user.dialog("Preferences")
        field = eventually(lambda: self.user.has_focus("text", "Storage folder"), "the first field has the focus")
        self.user.type_over(field, str(self.desktop.folder / name))
        return self.desktop.folder / name

    def end(self):
        died = self.user.process.poll()
        self.user.close()
        self.assertIn(died, (None, 0), "it crashed")
        lines = self.user.log.read_text(errors="replace").splitlines()
        self.assertEqual([line for line in lines if not any(text in line for text in self.noise)], [], "on stderr")


def main(*needed):
    """Runs the tests of the script that was started as FILE FOLDER-OF-PROGRAMS [TEST…], if the needed programs are here."""
    missing = [name for name in needed if not shutil.which(name)]
    if missing:
        print("SKIP: not installed:", *missing)
        sys.exit(77)
    WindowTest.programs = pathlib.Path(sys.argv.pop(1)).resolve()
    unittest.main()
