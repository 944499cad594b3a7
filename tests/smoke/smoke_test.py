#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""The window from outside: smoke_test.py FOLDER-OF-PROGRAMS [TEST…]. Real events of a screen of its own go in; the
accessibility tree, files and the exit status come out."""
import hashlib
import pathlib
import re
import shutil
import subprocess
import sys
import unittest

import desktop
import program
from desktop import eventually
from hands import X, event

BINARIES = pathlib.Path(".")
MEDIA_FILES = 17  # of the demo library, without its photos


def storage(user):
    return user.desktop.home / "Videos" / "com.Tarvolin.clipheave"


def title_of(path):
    done = subprocess.run(["ffprobe", "-v", "error", "-of", "csv=p=0", "-show_entries", "format_tags=title", path],
                          capture_output=True, text=True, check=True)
    return done.stdout.strip().strip('"')


def digest(path):
    return hashlib.sha256(path.read_bytes()).hexdigest()


class WindowTest(unittest.TestCase):
    arguments = ()
    noise = ("urls==",)  # lines of the activity log, which the console shows too

    @classmethod
    def setUpClass(cls):
        cls.desktop = desktop.Desktop()
        cls.addClassCleanup(cls.desktop.close)
        cls.demo = cls.desktop.folder / "demo"
        subprocess.run([BINARIES / "clipheave-cli", "demo", cls.demo], env=cls.desktop.env, check=True,
                       stdout=subprocess.DEVNULL)

    def setUp(self):
        shutil.rmtree(self.desktop.home / ".config/clipheave", ignore_errors=True)
        self.prepare()
        self.user = program.Program(self.desktop, BINARIES / "clipheave", self.arguments)
        self.addCleanup(self.end)

    def prepare(self):
        pass

    def end(self):
        died = self.user.process.poll()
        self.user.close()
        self.assertIn(died, (None, 0), "it crashed")
        lines = self.user.log.read_text(errors="replace").splitlines()
        self.assertEqual([line for line in lines if not any(text in line for text in self.noise)], [], "on stderr")


class MouseTest(WindowTest):
    def test_files_come_by_drop_and_by_panel(self):
        user = self.user
        tip = user.get("filler", "Drop your files here")
        text = self.desktop.folder / "notes.txt"
        text.touch()
        self.assertFalse(user.hands.drag([text], tip.centre), "a text file")
        self.assertTrue(user.hands.drag([self.demo / "Iceland"], tip.centre))
        eventually(lambda: len(user.names()) == 3, lambda: user.names())
        table = user.get("table", "Media list").centre
        odd = self.desktop.folder / "100% café #1.avi"
        shutil.copy(self.demo / "Harbour/old-camera.avi", odd)
        self.assertTrue(user.hands.drag([odd, self.demo / "Northbound/beacon.au"], table))
        eventually(lambda: user.names()[3:] == [odd.name, "beacon.au"], lambda: user.names())
        user.add(self.demo / "Harbour", 9)
        # The menu of the Add button.
        user.click("button menu", "Add")
        eventually(user.hands.menu_is_open, "the menu is open")
        user.hands.key("Down", "Down", "Return")
        user.dialog("Open")
        user.hands.key("Escape")

    def test_selection_decides_the_pane(self):
        user = self.user
        user.add(self.demo, MEDIA_FILES)
        user.select("dyrholaey-timelapse.mp4")
        user.get("text", "Director")
        user.select("07 Salt & Cedar.mp3")
        user.fact("Sample Rate: 44100 Hz")
        self.assertIsNone(user.tree.find("text", "Director"))
        user.open_by_panel(self.demo / "Photos/IMG_0412.jpg", "Ctrl+Shift+o")
        photos = eventually(lambda: user.tree.find("list", "Photo browser"), "the photo browser")
        tile = eventually(lambda: next((n for n in photos.children if n.name == "IMG_0412.jpg"), None), "its tile")
        user.hands.click(tile.centre)
        eventually(lambda: "selected" in tile.states, "the photo is selected")

    def test_headers_sort(self):
        user = self.user
        user.add(self.demo, MEDIA_FILES)
        files = {path.name: path.stat().st_size for path in self.demo.rglob("*.*")}

        def text_key(text):
            runs = [(0, int(run), "") if run.isdigit() else (1, 0, run.lower()) for run in re.split(r"(\d+)", text) if run]
            return bool(text), bool(text) and (text[0].isalnum() or text[0].isspace()), runs

        seconds = {"s": 1, "m": 60, "h": 3600}
        keys = {"Media Size": lambda row: files[row[0]],
                "Media Length": lambda row: sum(int(n) * seconds[u] for n, u in re.findall(r"(\d+)([smh])", row[2])),
                "Media Created Date": lambda row: row[6]}
        order = user.names()
        for index, header in enumerate(program.COLUMNS):
            key = keys.get(header, lambda row, i=index: text_key(row[i]))
            place = next(n for n in user.table("Media list").children if n.name == header).centre
            for click in (1, 2):
                # Texts go from Z to A first, numbers and dates from small to large.
                falling = (header in keys) == (click == 2)
                user.hands.click(place)
                eventually(lambda before=order: user.names() != before, f"{header}, click {click}, changes the order")
                values = [key(row) for row in user.rows()]
                self.assertEqual(values, sorted(values, reverse=falling), f"{header}, click {click}")
                order = user.names()
        user.fact("Sorted view: jobs follow the import order")

    def test_remove_takes_the_row_and_leaves_the_file(self):
        user = self.user
        user.add(self.demo, MEDIA_FILES)
        before = user.names()
        user.select(before[2])
        user.click("push button", "Remove from the list")
        eventually(lambda: user.names() == before[:2] + before[3:], lambda: user.names())
        user.get("label", "Nothing selected")
        self.assertTrue(list(self.demo.rglob(before[2])))

    def test_edit_and_save(self):
        user = self.user
        source = self.demo / "Iceland/dyrholaey-timelapse.mp4"
        original = digest(source)
        user.add(self.demo / "Iceland", 3)
        user.select(source.name)
        user.enter("Title", "black sand at 5, by mouse")
        user.click("push button", "Save Changes")
        user.open_activity()
        user.task_done("Save changes", "1 done")
        self.assertEqual(user.tasks()[1], ("Import", "3 files added"))
        self.assertEqual(len(user.task_files()), 1)
        self.assertIn(f"{source.name}, done", user.task_files()[0])
        self.assertEqual(title_of(storage(user) / source.name), "black sand at 5, by mouse")
        self.assertEqual(digest(source), original, "the source is changed")

    def test_preferences_are_kept(self):
        user = self.user
        user.hands.key("Ctrl+comma")
        user.dialog("Preferences")
        field = eventually(lambda: user.has_focus("text", "Storage folder"), "the first field has the focus")
        folder = str(self.desktop.folder / "my results")
        user.hands.key("Ctrl+a")
        user.hands.type(folder)
        eventually(lambda: field.text == folder, lambda: field.text)
        user.click("push button", "Save")
        eventually(lambda: not user.tree.find("dialog"), "the window is closed")
        kept = (self.desktop.home / ".config/clipheave/clipheave.conf").read_text()
        self.assertIn(f"storagePath={folder}", kept)
        self.assertTrue(pathlib.Path(folder).is_dir())

    def test_the_close_button_asks(self):
        user = self.user
        for answer in ("Cancel", "Exit"):
            user.click("push button", "Close")
            user.dialog("Are you sure you want to Exit ?")
            user.click("push button", answer)
            if answer == "Cancel":
                eventually(lambda: not user.tree.find("dialog"), "the question is gone")
                self.assertIsNone(user.process.poll())
        self.assertEqual(user.process.wait(desktop.PATIENCE), 0)

    def test_the_system_closes_at_once(self):
        self.user.hands.key("Alt+F4")
        self.assertEqual(self.user.process.wait(desktop.PATIENCE), 0)


if __name__ == "__main__":
    if not shutil.which("Xvfb"):
        print("SKIP: Xvfb is not installed (package xvfb)")
        sys.exit(77)
    BINARIES = pathlib.Path(sys.argv.pop(1)).resolve()
    unittest.main()
