#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""The window from outside: smoke_test.py FOLDER-OF-PROGRAMS [TEST…]. Real events of a screen of its own go in; the
accessibility tree, files and the exit status come out."""
import hashlib
import json
import pathlib
import plistlib
import re
import shutil
import struct
import subprocess
import unittest
import zlib

import desktop
import hands
import program
from desktop import eventually
from program import WindowTest

MEDIA_FILES = 17  # of the demo library, without its photos


def storage(user):
    return user.desktop.home / "Videos" / "com.Tarvolin.clipheave"


def title_of(path):
    done = subprocess.run(["ffprobe", "-v", "error", "-of", "csv=p=0", "-show_entries", "format_tags=title", path],
                          capture_output=True, text=True, check=True)
    return done.stdout.strip().strip('"')


def digest(path):
    return hashlib.sha256(path.read_bytes()).hexdigest()


def setUpModule():
    shared = desktop.Desktop()
    unittest.addModuleCleanup(shared.close)
    WindowTest.use(shared)


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
        user.click_on(tile)
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

    def test_rename_and_take_it_back(self):
        user = self.user
        folder = self.desktop.folder / "rename"
        shutil.copytree(self.demo / "Iceland", folder)
        self.addCleanup(shutil.rmtree, folder)
        before = {path.name: digest(path) for path in folder.iterdir()}
        user.add(folder, 3)
        user.select(user.names()[0])
        user.hands.key("Ctrl+a")
        user.click("push button", "Rename")
        user.dialog("Rename")
        eventually(lambda: user.has_focus("text", "Custom text"), "the text has the focus")
        user.hands.type("Trip")
        numbers = [node for node in user.tree.shown() if (node.role, node.name) == ("check box", "Start number at: 1")]
        user.click_on(numbers[0])
        new = [f"Trip{number:06}{pathlib.Path(name).suffix}" for number, name in enumerate(user.names(), 1)]
        eventually(lambda: [row[1] for row in user.rows("Current and new names")] == new, lambda: new)
        self.assertEqual([path.name for path in folder.iterdir() if path.name not in before], [], "before Return")
        user.hands.key("Return")
        eventually(lambda: not user.tree.find("dialog"), "the window is closed")
        eventually(lambda: "active" in user.window.states, "the main window is active again")
        user.open_activity()
        user.task_done("Rename", "3 done")
        self.assertEqual(sorted(path.name for path in folder.iterdir()), sorted(new))
        user.hands.key("Alt+e")
        eventually(user.hands.menu_is_open, "the menu is open")
        user.click("menu item", "Undo Rename")
        user.task_done("Undo rename", "3 done")
        self.assertEqual({path.name: digest(path) for path in folder.iterdir()}, before)

    def test_edit_and_save(self):
        user = self.user
        source = self.demo / "Iceland/dyrholaey-timelapse.mp4"
        original = digest(source)
        user.add(self.demo / "Iceland", 3)
        user.select(source.name)
        user.enter("Title", "black sand at 5, by mouse")
        user.click("push button", "Save Changes")
        user.open_activity()
        user.task_done("Save changes", "1 written")
        self.assertEqual(user.tasks()[1], ("Import", "3 files added"))
        files = user.task_files()
        self.assertEqual(len(files), 1)
        self.assertIn(f"{source.name}, done", files[0])
        self.assertEqual(title_of(storage(user) / source.name), "black sand at 5, by mouse")
        self.assertEqual(digest(source), original, "the source is changed")

    def test_rotate_by_keys(self):
        user = self.user
        folder = self.demo / "Iceland"
        before = {path.name: digest(path) for path in folder.iterdir()}
        user.add(folder, 3)
        user.select(user.names()[0])
        user.hands.key("Ctrl+a", "Ctrl+r")
        user.open_activity()
        user.task_done("Rotate right (clockwise) by 90 degrees", "3 written")
        for name in before:
            sizes = [subprocess.run(["ffprobe", "-v", "error", "-select_streams", "V:0", "-of", "csv=p=0", "-show_entries",
                                     "stream=width,height", path], capture_output=True, text=True).stdout.strip().split(",")
                     for path in (folder / name, storage(user) / name)]
            self.assertEqual(sizes[0][::-1], sizes[1], name)
            self.assertEqual(title_of(storage(user) / name), title_of(folder / name))
        self.assertEqual({path.name: digest(path) for path in folder.iterdir()}, before)

    def test_preferences_are_kept(self):
        user = self.user
        folder = self.type_storage_folder("my results")
        user.click("push button", "Save")
        eventually(lambda: not user.tree.find("dialog"), "the window is closed")
        kept = (self.desktop.home / ".config/clipheave/clipheave.conf").read_text()
        self.assertIn(f"storagePath={folder}", kept)
        self.assertTrue(folder.is_dir())

    def test_the_close_button_asks(self):
        user = self.user
        for button in ("Cancel", "Exit"):
            user.click("push button", "Close")
            user.dialog("Are you sure you want to Exit ?")
            user.click("push button", button)
            if button == "Cancel":
                eventually(lambda: not user.tree.find("dialog"), "the question is gone")
                self.assertIsNone(user.process.poll())
        self.assertEqual(user.process.wait(desktop.PATIENCE), 0)

    def test_the_system_closes_at_once(self):
        self.user.hands.key("Alt+F4")
        self.assertEqual(self.user.process.wait(desktop.PATIENCE), 0)


class VideoJobTest(WindowTest):
    noise = WindowTest.noise + ("late.mp4", "Export failed: ", "11111", "22222", "cancelled")

    def make_video(self, name, seconds):
        subprocess.run(["ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", f"testsrc2=size=960x540:duration={seconds}",
                        "-f", "lavfi", "-i", f"sine=duration={seconds}", "-c:v", "libx264", "-preset", "ultrafast",
                        "-c:a", "aac", "-metadata", "title=Tide", self.work / name], check=True)

    def prepare(self):
        self.work = self.desktop.folder / "videos"
        self.work.mkdir()
        self.addCleanup(shutil.rmtree, self.work)
        self.make_video("a.mp4", 40)
        self.make_video("b.mov", 40)
        (self.work / "late.mp4").write_text("not yet a video")

    def test_cancel_and_try_again(self):
        user = self.user
        job = "Compress, Medium video quality"
        out = storage(user)
        before = set(out.rglob("*.*"))
        user.add(self.work, 3)
        user.select("a.mp4")
        user.hands.key("Ctrl+a")
        user.click("button menu", "Compress")
        eventually(user.hands.menu_is_open, "the menu is open")
        user.hands.key("Down", "Down", "Return")
        # The file that is no video opens the panel.
        eventually(lambda: user.tree.find("table", "Tasks") and user.tasks()[0][0] == job, "the job is listed")
        user.click_on(user.cells("Tasks")[0][1])
        files = user.get("list", "Files")
        eventually(lambda: any(re.match(r"(a\.mp4|b\.mov), running, \d+%", node.name) for node in files.children),
                   lambda: f"progress, but {[node.name for node in files.children]}")
        user.click("push button", "Cancel")
        user.task_done(job, "1 failed, 2 cancelled")
        self.assertEqual(set(out.rglob("*.*")), before, "something half done is left")
        self.make_video("late.mp4", 1)
        user.click("push button", "Try Again")
        eventually(lambda: re.fullmatch(r"[\d.]+ KB to [\d.]+ KB", user.tasks()[0][1]), lambda: user.tasks())
        self.assertEqual(user.tasks()[0][0], job)
        made = out / "videos/late.mp4"  # the folder was imported: its videos keep their places in it
        self.assertEqual(set(out.rglob("*.*")) - before, {made})
        self.assertEqual(title_of(made), "Tide")
        self.assertEqual(sorted(path.name for path in self.work.iterdir()), ["a.mp4", "b.mov", "late.mp4"])


def tags(path, *names):
    """The values of a photo's tags, one a line, as numbers."""
    return subprocess.run(["exiftool", "-s3", "-n", *names, path], capture_output=True, text=True, check=True).stdout


class PhotoToolTest(WindowTest):
    def select_photo(self, name="IMG_0412.jpg"):
        user = self.user
        user.open_by_panel(self.demo / "Photos" / name, "Ctrl+Shift+o")
        photos = eventually(lambda: user.tree.find("list", "Photo browser"), "the photo browser")
        tile = eventually(lambda: next((n for n in photos.children if n.name == name), None), "its tile")
        user.click_on(tile)
        eventually(lambda: "selected" in tile.states, "the photo is selected")
        return user

    def dismiss(self, message, text):
        """Closes the alert with Return once it says what it should."""
        self.user.dialog(message)
        self.user.fact(text)
        self.user.hands.key("Return")
        eventually(lambda: not self.user.tree.find("dialog", message), f"{message} is closed")

    def test_type_a_position_and_save_it(self):
        user = self.select_photo()
        user.hands.key("Ctrl+g")
        user.dialog("Edit GPS")
        for name, shown, typed in (("Latitude", "63.4043", "-33,5"), ("Longitude", "-19.0571", "-70.25"), ("Altitude", "12.5", "-10"),
                                   ("Preview on Map", None, None), ("Date", "", "2024:05:06"), ("Time", "", "07:08:09")):
            node = eventually(lambda n=name, t=typed: user.has_focus("text" if t else "push button", n), f"{name} has the focus")
            if typed:
                self.assertEqual(node.text, shown)
                user.type_over(node, typed)
            if name != "Time":
                user.hands.key("Tab")
        user.hands.key("Return")
        made = storage(user) / "IMG_0412.jpg"
        eventually(made.exists, "the copy")
        self.assertEqual(tags(made, "-GPSLatitude", "-GPSLongitude", "-GPSAltitude", "-GPSDateStamp", "-GPSTimeStamp"),
                         "-33.5\n-70.25\n-10\n2024:05:06\n07:08:09\n")
        self.assertEqual(tags(made, "-GPSLatitudeRef", "-GPSLongitudeRef", "-GPSAltitudeRef"), "S\nW\n1\n")
        eventually(lambda: not user.tree.find("dialog"), "the sheet is closed")

    def test_pick_a_position_on_the_map(self):
        user = self.select_photo()
        before = set(storage(user).rglob("*"))
        user.hands.key("Ctrl+g")
        user.dialog("Edit GPS")
        fields = [user.get("text", name) for name in ("Latitude", "Longitude")]
        eventually(lambda: fields[0].text == "63.4043", "the position of the photo")
        x, y, width, height = self.map().extents
        user.hands.click((x + width // 4, y + height // 4))
        eventually(lambda: 63.42 < float(fields[0].text) < 63.45 and -19.17 < float(fields[1].text) < -19.14,
                   lambda: f"north west of before, but {[field.text for field in fields]}")
        user.escape("the sheet")
        self.assertEqual(set(storage(user).rglob("*")), before)

    def map(self):
        return eventually(lambda: next((n for n in self.user.tree.shown() if n.name == "Map" and n.role != "dialog"), None), "the map")

    def test_alerts_about_positions(self):
        user, before = self.user, set(storage(self.user).rglob("*"))
        user.hands.key("Ctrl+g")
        self.dismiss("No Item has been selected", "Please select at least one item to process.")
        self.select_photo("studio.tif")
        user.hands.key("Ctrl+g")
        self.dismiss("No GPS Data", "The selected photo does not contain GPS information.")
        user.hands.key("Ctrl+Shift+m")
        self.dismiss("No GPS Data", "This photo does not contain GPS information.")
        user.click("button menu", "Metadata")
        eventually(user.hands.menu_is_open, "the menu is open")
        user.hands.key("Down", "Down", "Return")
        user.dialog("Add GPS")
        eventually(lambda: user.has_focus("text", "Latitude"), "the first field has the focus")
        user.hands.key("Return")
        self.dismiss("Vaule Error", "Each value cannot be empty.")
        user.escape("the sheet")
        self.assertEqual(set(storage(user).rglob("*")), before)

    def test_the_map_alone(self):
        user = self.select_photo()
        user.hands.key("Ctrl+Shift+m")
        user.dialog("Map")
        self.assertEqual(self.map().extents[2:], (688, 408))
        user.hands.key("Escape")
        eventually(lambda: not user.tree.find("dialog"), "Escape closes the map")

    def test_edit_two_photos_in_their_pane(self):
        user = self.select_photo()
        user.open_by_panel(self.demo / "Photos/IMG_0418.jpg", "Ctrl+Shift+o")
        photos = user.tree.find("list", "Photo browser")
        other = eventually(lambda: next((n for n in photos.children if n.name == "IMG_0418.jpg"), None), "the other tile")
        user.hands.click_with("Ctrl", other.centre)
        eventually(lambda: "selected" in other.states, "both are selected")
        user.hands.key("Ctrl+Return")
        title = eventually(lambda: user.has_focus("text", "Title"), "the first field of the pane has the focus")
        user.type_over(title, "Two at dusk")
        user.click("push button", "Apply")
        names = ["IMG_0412.jpg", "IMG_0418.jpg"]
        made = [storage(user) / name for name in names]
        user.fact("Saved 2 copies")

        def all_tags(path):
            dump = subprocess.run(["exiftool", "-j", "-G1", "-a", "-x", "System:all", path], capture_output=True, text=True,
                                  check=True)
            return json.loads(dump.stdout)[0]
        shown = all_tags(self.demo / "Photos" / other.name)  # the current one: its section goes to both
        basic = ("IFD0:Artist", "IFD0:ImageDescription", "IFD0:Copyright", "ExifIFD:UserComment")
        for name, path in zip(names, made):
            before, after = all_tags(self.demo / "Photos" / name), all_tags(path)
            changed = {key for key in before.keys() | after.keys() if before.get(key) != after.get(key)}
            self.assertEqual(after["IPTC:ObjectName"], "Two at dusk")
            self.assertEqual([after.get(key, "") for key in basic], [shown.get(key, "") for key in basic], name)
            others = {key for key in changed - set(basic) if not key.startswith(("IPTC:", "SourceFile", "File:"))}
            self.assertEqual(others, set(), name)
        user.hands.key("Escape")
        eventually(lambda: title.text == "", "the field has its old text")
        user.hands.key("Escape")
        eventually(lambda: not user.tree.find("text", "Title"), "the pane is closed")

    def test_export_all_metadata_from_the_grid(self):
        user = self.select_photo()
        user.click("button menu", "Property List")
        eventually(user.hands.menu_is_open, "the menu is open")
        user.hands.key(*["Down"] * 6, "Return")
        made = storage(user) / "ExportAllMetadataInfo.plist"
        eventually(made.exists, "the property list")
        listed = plistlib.loads(made.read_bytes())
        taken = subprocess.run(["exiftool", "-s3", "-DateTimeOriginal", self.demo / "Photos/IMG_0412.jpg"],
                               capture_output=True, text=True, check=True).stdout.strip()
        self.assertEqual(listed["{Exif}"]["DateTimeOriginal"], taken)

    def test_remove_the_position_from_the_grid(self):
        user = self.select_photo()
        user.click("button menu", "Remove")
        eventually(user.hands.menu_is_open, "the menu is open")
        user.hands.key("Down", "Down", "Return")
        made = storage(user) / "NoGPS_IMG_0412.jpg"
        eventually(made.exists, "the copy")
        self.assertNotEqual(tags(self.demo / "Photos/IMG_0412.jpg", "-GPS:all"), "")
        self.assertEqual(tags(made, "-GPS:all"), "")
        self.assertEqual(tags(made, "-ExifIFD:all", "-Make"), tags(self.demo / "Photos/IMG_0412.jpg", "-ExifIFD:all", "-Make"))

    def test_stamp_from_the_grid(self):
        user = self.select_photo()
        user.click("button menu", "Date Stamp")
        eventually(user.hands.menu_is_open, "the menu is open")
        user.hands.key("Down", "Return")
        made = storage(user) / "IMG_0412_date.jpg"
        eventually(made.exists, "the stamped photo")
        facts = tags(made, "-FileModifyDate", "-DateTimeOriginal", "-Orientation").split("\n")
        self.assertEqual(facts[0][:19], facts[1])
        self.assertEqual(facts[2], "1")


class KeyboardTest(WindowTest):
    """Without a mouse."""

    def setUp(self):
        super().setUp()
        # Away from everything, so that nothing is hovered.
        self.user.hands.move(1599, 999)

    def stops(self):
        """What can have the focus in the window, in the order of the tree."""
        return [node for node in self.user.window.shown() if "focusable" in node.states]

    def focus(self, stops, previous):
        """The one of them that has the focus, once that is no longer the previous one."""
        return eventually(lambda: next((n for n in stops if n != previous and "focused" in n.states), None),
                          lambda: f"the focus leaves {previous}")

    def band(self, node):
        """The part of the window where a node stands, from its place on the screen."""
        left, top, width, height = self.user.window.extents
        x, y, table = node.extents[0] - left, node.extents[1] - top, node.role == "table"
        pane = x > width - 600
        return ("tools" if y < 96 else "activity" if y > height - 33 else "list" if table else
                ("pane head" if pane else "list head") if y < 140 else
                "save" if pane and y > height - 85 else "pane")

    def test_tab_goes_round_the_window(self):
        user = self.user
        user.add(self.demo / "Iceland", 3)
        user.hands.key("F6")
        user.hands.key("Down")
        user.fact(f"File Name: {user.names()[0]}")
        stops = self.stops()
        ring, here = [], self.focus(stops, None)
        while here not in ring and len(ring) <= len(stops):
            ring.append(here)
            user.hands.key("Tab")
            here = self.focus(stops, here)
        self.assertEqual(here, ring[0], "the focus is trapped")
        self.assertEqual([repr(n) for n in stops if n not in ring], [], "Tab does not come here")
        bands = [self.band(node) for node in ring]
        first = next(i for i, band in enumerate(bands) if band == "tools" and bands[i - 1] != "tools")
        ring = ring[first:] + ring[:first]
        bands = list(dict.fromkeys(bands[first:] + bands[:first]))
        self.assertEqual(bands, ["tools", "list head", "list", "pane head", "pane", "save", "activity"])
        self.assertEqual([self.band(n) for n in ring], sorted([self.band(n) for n in ring], key=bands.index))
        fields = [node.name for node in ring if node.role == "text"]
        self.assertEqual(fields, ["Title", "Album", "Artist", "Director", "Performer", "Producer", "Publisher",
                                  "Copyright", "Keywords", "Description", "Shot", "Created", "Latitude", "Longitude",
                                  "Altitude"])
        self.walk_back(ring, here)

    def walk_back(self, ring, here):
        """Shift+Tab takes the same way back, and every stop is drawn differently with the focus."""
        user = self.user
        start = ring.index(here)
        way = [ring[start - i - 1] for i in range(len(ring))]
        plain = {node.path: user.hands.pixels(node.extents, 3) for node in ring if node != here}
        unseen = []
        for stop in way:
            user.hands.key("Shift+Tab")
            here = self.focus(ring, here)
            self.assertEqual(here, stop, "Shift+Tab goes another way than Tab")
            if stop.path in plain and not self.looks_other(stop, plain[stop.path]):
                unseen.append(repr(stop))
        self.assertEqual(unseen, [], "these do not show that they have the focus")

    def looks_other(self, node, before):
        least = 60  # pixels; a text cursor has fewer
        try:
            eventually(lambda: hands.differing(self.user.hands.pixels(node.extents, 3), before) >= least, "", 1)
        except AssertionError:
            return False
        return True

    def test_f6_goes_from_band_to_band(self):
        user = self.user
        user.add(self.demo / "Iceland", 3)
        user.select(user.names()[0])
        stops = self.stops()
        ways = {}
        here = self.focus(stops, None)
        for key in ("F6", "Shift+F6"):
            ways[key] = [self.band(here).split()[0]]
            for _ in range(4):
                user.hands.key(key)
                here = self.focus(stops, here)
                ways[key].append(self.band(here).split()[0])
        self.assertEqual(ways["F6"], ["list", "pane", "activity", "tools", "list"])
        self.assertEqual(ways["Shift+F6"], ways["F6"][::-1])

    def test_menus(self):
        user = self.user
        user.hands.key("Alt")
        eventually(lambda: user.has_focus("menu item", "File"), "Alt goes to the menu bar")
        user.hands.key("Right", "Down")
        eventually(lambda: user.has_focus("menu item", "Undo"), "the second menu is open")
        user.hands.key("Left")
        eventually(lambda: user.has_focus("menu item", "Add Files or Folders…"), "the first one, in its place")
        user.hands.key("Return")
        user.dialog("Open")
        user.escape("the panel")
        user.hands.key("Alt+v")
        eventually(user.hands.menu_is_open, "the menu of this letter is open")
        user.hands.key("Escape", "Escape")

    def test_edit_and_save_with_keys_alone(self):
        user = self.user
        user.add(self.demo / "Harbour", 4)
        user.hands.key("F6", "End")
        name = user.names()[-1]
        user.fact(f"File Name: {name}")
        title = user.get("text", "Title")
        user.tab_to(title)
        user.type_over(title, "typed without a mouse")
        user.hands.key("Shift+Tab", "Tab", "Ctrl+s", "Ctrl+j")
        user.task_done("Save changes", "1 written")
        self.assertEqual(title_of(storage(user) / name), "typed without a mouse")


class AccessTest(WindowTest):
    """What assistive technology sees."""

    def test_the_window(self):
        user = self.user
        user.add(self.demo, MEDIA_FILES)
        user.select("VID_20250615_123045.mp4")
        faults = self.nameless("the window")
        shown = [(node.role, node.name) for node in user.window.shown()]
        menus = [node.name for node in user.get("menu bar").children]
        self.assertEqual(menus, ["File", "Edit", "Metadata", "Dates", "Video", "Photo", "Device", "View", "Help"])
        wanted = [("button menu", name) for name in
                  ("Add", "Dates", "Metadata", "Convert", "Compress", "Edit", "Watermark", "Extract")]
        wanted += [("push button", name) for name in
                   ("Rename", "Storage folder", "Save Changes", "Add files or folders", "Remove from the list", "Play")]
        wanted += [("animation", "Player"), ("graphic", "Artwork"), ("graphic", "Map")]
        faults += [f"there is no {role} '{name}'" for role, name in wanted if (role, name) not in shown]
        # Each field has the name of the label beside it.
        faults += [f"field '{name}' has no label" for role, name in shown
                   if role == "text" and ("label", name) not in shown]
        headers = [node.name for node in user.table("Media list").children if node.role == "column header"]
        self.assertEqual(headers, list(program.COLUMNS))
        user.open_activity()
        faults += self.nameless("the activity panel")
        self.assertEqual(faults, [], "\n" + "\n".join(faults))

    def nameless(self, place):
        return [f"{place}: a {node.role} at {node.extents} can have the focus and has no name"
                for node in self.user.tree.shown(into_tables=True)
                if "focusable" in node.states and not node.name and node.role not in ("cell", "list item", "tree item")]

    def test_states_follow(self):
        user = self.user
        user.add(self.demo / "Iceland", 3)
        names = user.names()
        user.select(names[1])
        chosen = [["selected" in node.states for node in row] for row in user.cells()]
        self.assertEqual([set(row) for row in chosen], [{False}, {True}, {False}])
        eventually(lambda: user.has_focus("table", "Media list"), "the list has the focus")
        parts = {name: user.get("push button", name) for name in ("List", "Photos")}
        for key, name in (("Ctrl+2", "Photos"), ("Ctrl+1", "List")):
            user.hands.key(key)
            eventually(lambda n=name: [p for p in parts if "checked" in parts[p].states] == [n], f"{name} is chosen")

    def test_other_windows(self):
        user, faults = self.user, []
        for keys, name in ((("Ctrl+comma",), "Preferences"), (("Ctrl+o",), "Open"),
                           (("F2",), "Rename"), (("Ctrl+q",), "Are you sure you want to Exit ?")):
            user.hands.key(*keys)
            window = user.dialog(name)
            eventually(user.focused, f"something has the focus in {name}")
            faults += self.nameless(name)
            self.assertIn("active", window.states)
            user.escape(name)
        self.assertEqual(faults, [], "\n" + "\n".join(faults))


def black_png(path, side):
    """An image of one bit a pixel, which is small as a file."""
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
    rows = zlib.compress(bytes((side // 8 + 1) * side))
    path.write_bytes(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", side, side, 1, 0, 0, 0, 0)) +
                     chunk(b"IDAT", rows) + chunk(b"IEND", b""))


class BadInputTest(WindowTest):
    """No crash, and a reason in the activity panel."""
    noise = WindowTest.noise + ("No such file or directory", "Not a directory", "too many pixels", "clipheave.conf")

    def prepare(self):
        self.work = self.desktop.folder / "work"
        shutil.rmtree(self.work, ignore_errors=True)
        shutil.copytree(self.demo / "Iceland", self.work)
        config = self.desktop.home / ".config/clipheave"
        config.mkdir(exist_ok=True)
        self.config = config / "clipheave.conf"
        if "preferences" in self._testMethodName:
            self.config.write_bytes(b"\x00\xff\xfe[[[\nstoragePath=\x01\"unclosed\n" * 20)
        if "folder" in self._testMethodName:
            self.config.write_text(f"[General]\nstoragePath={self.demo / 'Photos/scan-1987.png'}/results\n")

    def save(self, result):
        """Saves; returns what the panel says about the files."""
        user = self.user
        user.hands.key("Ctrl+s")
        if "failed" not in result:  # the first failure opens the panel by itself
            user.open_activity()
        user.task_done("Save changes", result)
        return user.task_files()

    def log(self):
        user = self.user
        if not user.tree.find("push button", "Log"):
            user.open_activity()
        user.click("push button", "Log")
        lines = eventually(lambda: user.tree.find("list", "Log"), "the log")
        return eventually(lambda: [node.name for node in lines.children], "a line in the log")

    def test_files_that_vanish(self):
        user = self.user
        user.add(self.work, 3)
        name = user.names()[0]
        user.select(name)
        shutil.rmtree(self.work)
        user.enter("Title", "too late")
        self.assertRegex(self.save("1 failed")[0], "No such file or directory")
        user.select(user.names()[1])

    def test_texts_of_all_kinds(self):
        """Names and titles that are long, run from right to left or carry combining marks."""
        user = self.user
        # The same text may be stored with other combinations of marks: composed here.
        name = "\u05e9\u05dc\u05d5\u05dd abc e\u0301.mp4"
        (self.work / "dyrholaey-timelapse.mp4").rename(self.work / name)
        user.hands.drag([self.work / name], user.get("filler", "Drop your files here").centre)
        eventually(lambda: user.tree.find("table"), "the list")
        eventually(lambda: user.names() == [name], lambda: user.names())
        user.select(name)
        for title in ("t" * 300, "\u0645\u0631\u062d\u0628\u0627 (1) \u202eabc\u202c o\u0308\u0323 \U0001f3ac"):
            user.enter("Title", title, paste=True)
            if user.tree.find("table", "Tasks"):
                user.hands.key("Ctrl+j")
            self.save("1 written")
            written = sorted(storage(user).glob("*.mp4"), key=lambda path: path.stat().st_mtime)[-1]
            self.assertEqual(title_of(written), title)

    def test_artwork_of_20000_pixels(self):
        user = self.user
        image = self.desktop.folder / "huge.png"
        black_png(image, 20000)
        user.add(self.work, 3)
        user.select(user.names()[0])
        well = next(node for node in user.window.shown() if node.name == "Artwork")
        user.hands.drag([image], well.centre)
        self.assertRegex("\n".join(self.log()), "too many pixels")

    def test_broken_preferences(self):
        user = self.user
        self.assertRegex("\n".join(self.log()), "clipheave.conf")
        self.assertIn(f"storagePath={storage(user)}", self.config.read_text())
        kept = [path for path in self.config.parent.iterdir() if b"unclosed" in path.read_bytes()]
        self.assertEqual(len(kept), 1, "the broken file is kept aside")

    def test_storage_folder_below_a_file(self):
        user = self.user
        user.add(self.work, 3)
        user.select(user.names()[0])
        user.enter("Title", "nowhere to go")
        self.assertRegex(self.save("1 failed")[0], "Not a directory")

    def test_audio_without_a_device(self):
        user = self.user
        user.add(self.demo / "Northbound/beacon.au", 1)
        user.select("beacon.au")
        user.click("push button", "Play")
        user.get("push button", "Pause")
        user.get("push button", "Play")  # after its two seconds
        if not pathlib.Path("/dev/snd").exists():
            eventually(lambda: any("No working sound device" in line for line in self.log()), "a reason in the log")


if __name__ == "__main__":
    program.main("Xvfb")
