#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""The window under a Wayland compositor: wayland_test.py FOLDER-OF-PROGRAMS [TEST…]. The compositor paints into a screen
that no one sees, so that the hands of the other smoke tests reach it; the program itself speaks Wayland alone."""
import struct
import time

from Xlib import X
from Xlib.ext import xtest

import desktop
import hands
import program
from desktop import eventually

GROUND = 0x336699
MAGENTA = 0xFF00FF
COMPOSITOR = f"""[core]
idle-time=0
[shell]
panel-position=none
locking=false
animation=none
startup-animation=none
close-animation=none
focus-animation=none
background-color=0xff{GROUND:06x}
"""


class WaylandDesktop(desktop.Desktop):
    """The same with a compositor that fills the screen in place of a window manager."""
    screen = "2400x1500"

    def manage_windows(self):
        (self.folder / "weston.ini").write_text(COMPOSITOR)
        self.env |= {"WAYLAND_DISPLAY": "wayland-smoke", "QT_QPA_PLATFORM": "wayland"}
        self.start(["weston", "--backend=x11-backend.so", "--use-pixman", "--width=2400", "--height=1500",
                    "--socket=wayland-smoke", f"--config={self.folder}/weston.ini"])
        eventually((self.folder / "run/wayland-smoke").exists, (self.folder / "services.txt").read_text)


class WaylandHands(hands.Hands):
    """Programs do not know where their windows stand: places are counted from the main window's corner, in its units."""
    origin, scale = (0, 0), 1.0

    def __init__(self, name):
        super().__init__(name)
        screen = eventually(self.compositor, "the compositor's screen")
        screen.set_input_focus(X.RevertToParent, X.CurrentTime)
        self.enter()

    def enter(self):
        """Leaves the compositor's window and enters it: where the pointer stood before the window came, the compositor may
        miss it, and then takes no pointer at all."""
        cover = self.screen.root.create_window(0, 0, self.screen.width_in_pixels, self.screen.height_in_pixels, 0,
                                               X.CopyFromParent, override_redirect=True)
        cover.map()
        self.display.sync()
        cover.destroy()
        self.display.sync()

    def compositor(self):
        windows = self.screen.root.query_tree().children
        return next((w for w in windows if w.get_geometry().width == self.screen.width_in_pixels
                     and w.get_attributes().map_state == X.IsViewable), None)

    def move(self, x, y):
        super().move(*self.on_screen(x, y))

    def on_screen(self, x, y):
        return round(x * self.scale) + self.origin[0], round(y * self.scale) + self.origin[1]

    def drag_from_to(self, start, end):
        """Presses at one place of the screen and releases at another, in steps as a hand makes them."""
        super().move(*start)
        xtest.fake_input(self.display, X.ButtonPress, 1)
        for step in range(1, 9):
            super().move(*(a + (b - a) * step // 8 for a, b in zip(start, end)))
            time.sleep(0.03)
        time.sleep(0.2)  # the target under the pointer has to be asked first
        xtest.fake_input(self.display, X.ButtonRelease, 1)
        self.display.sync()

    def bounds(self, colour, inside):
        """left, top, right, bottom of what has the colour, or of what has another; None: there is nothing."""
        width, height = self.screen.width_in_pixels, self.screen.height_in_pixels
        data = bytes(self.screen.root.get_image(0, 0, width, height, X.ZPixmap, 0xFFFFFF).data)
        pixel = struct.pack("<I", colour)
        rows = [data[y * width * 4:(y + 1) * width * 4] for y in range(height)]
        counts = [row.count(pixel) if inside else width - row.count(pixel) for row in rows]
        hit = [y for y, count in enumerate(counts) if count > 40]  # the pointer is smaller
        if not hit:
            return None
        middle = struct.unpack(f"<{width}I", rows[(hit[0] + hit[-1]) // 2])
        across = [x for x, value in enumerate(middle) if (value == colour) == inside]
        return across[0], hit[0], across[-1] + 1, hit[-1] + 1


class WaylandTest(program.WindowTest):
    noise = program.WindowTest.noise + ("wl_", "libEGL", "MESA")
    scale = 1.0

    @classmethod
    def setUpClass(cls):
        own = WaylandDesktop()
        cls.addClassCleanup(own.close)
        cls.use(own)

    def setUp(self):
        own, hands.Hands = hands.Hands, WaylandHands
        self.addCleanup(setattr, hands, "Hands", own)
        super().setUp()
        self.place()

    def place(self):
        """Finds the window on the screen, once it stands still."""
        seen = []

        def still():
            seen.append(self.user.hands.bounds(GROUND, inside=False))
            return len(seen) > 1 and seen[-1] and seen[-1] == seen[-2] and seen[-1]
        bounds = eventually(still, "the window stands still")
        self.user.hands.origin = bounds[:2]
        self.user.hands.scale = self.scale
        return bounds

    def test_moves_and_resizes_by_its_own_frame(self):
        left, top, right, bottom = self.place()
        self.assertEqual((right - left, bottom - top), self.size())
        x, y = self.user.hands.on_screen(700, 10)
        self.user.hands.drag_from_to((x, y), (x - left // 2, y - top // 2))
        moved = eventually(lambda: (b := self.place())[:2] != (left, top) and b, "it moves")
        self.assertEqual(moved, (left - left // 2, top - top // 2, right - left // 2, bottom - top // 2))
        left, top, right, bottom = moved
        self.user.hands.drag_from_to((right - 2, top + 500), (right - 122, top + 500))
        eventually(lambda: self.place() == (left, top, right - 120, bottom), lambda: f"{moved} becomes {self.place()}")
        eventually(lambda: self.size() == (right - left - 120, bottom - top), "its parts follow")

    def size(self):
        """Of the window, in pixels of the screen."""
        return tuple(round(value * self.user.hands.scale) for value in self.user.window.extents[2:])

    def test_menus_and_sheets(self):
        user = self.user
        user.click("menu item", "File")
        user.click("menu item", "Add Files or Folders…")
        user.dialog("Open")
        user.escape("the panel")
        self.type_storage_folder("results")
        user.escape("the sheet")
        user.click("push button", "Close")
        user.dialog("Are you sure you want to Exit ?")
        user.escape("the question")
        self.assertIsNone(user.process.poll())

    def test_edits_and_saves(self):
        user = self.user
        user.add(self.demo / "Iceland", 3)
        user.select("dyrholaey-timelapse.mp4")
        user.enter("Title", "by another way")
        user.hands.key("Ctrl+s")
        user.open_activity()
        user.task_done("Save changes", "1 written")

    def test_another_program_gives_files_and_a_cover(self):
        user = self.user
        files = [self.demo / "Harbour/old-camera.avi", self.demo / "Northbound/beacon.au"]
        helper = self.desktop.start([self.programs / "other_program", self.demo / "Photos/IMG_0412.jpg", *files])
        self.addCleanup(helper.kill)
        other = eventually(lambda: user.hands.bounds(MAGENTA, inside=True), "the other program's window")
        middle = (other[0] + other[2]) // 2, (other[1] + other[3]) // 2
        x, y, width, height = user.get("filler", "Drop your files here").extents
        # It may cover any part of the main window.
        places = [user.hands.on_screen(x + width * part // 4, y + height // 2) for part in (1, 3)]
        user.hands.drag_from_to(middle, max(places, key=lambda place: abs(place[0] - middle[0])))
        eventually(lambda: sorted(user.names()) == ["beacon.au", "old-camera.avi"], "the files are listed")
        user.select("old-camera.avi")
        well = user.get("graphic", "Artwork")
        self.assertEqual(well.description, "No artwork")
        # The drag was a press too: a photo is on the clipboard.
        user.hands.key("Tab")
        user.tab_to(well)
        user.hands.key("Ctrl+v")
        eventually(lambda: well.description.endswith(" pixels"), lambda: well.description)


class ScaledTest(WaylandTest):
    """At 150 %: what is drawn and what the pointer hits are the same place."""
    scale, environment = 1.5, {"QT_SCALE_FACTOR": "1.5"}


if __name__ == "__main__":
    program.main("Xvfb", "weston")
