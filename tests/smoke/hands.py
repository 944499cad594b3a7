# SPDX-License-Identifier: GPL-3.0-or-later
"""Keyboard, mouse, clipboard and a drag from another program, as events that come from the X server."""
import os
import subprocess
import time
from urllib.parse import quote

from Xlib import X, XK, Xatom, display
from Xlib.ext import xtest
from Xlib.protocol import event

from desktop import eventually

KEYS = {"Ctrl": XK.XK_Control_L, "Shift": XK.XK_Shift_L, "Alt": XK.XK_Alt_L}
# Unshifted keys of the server's US keyboard that have no name of one letter.
SIGNS = {" ": "space", "/": "slash", "-": "minus", ".": "period", ",": "comma", "\\": "backslash", "_": "underscore",
         ":": "colon"}
DRAG_VERSION = 5


def differing(one, other):
    """How many pixels of two images of one size differ."""
    return sum(a != b for a, b in zip(memoryview(one).cast("I"), memoryview(other).cast("I")))


class Hands:
    """A user of one display. Every act returns once the server has taken it."""

    def __init__(self, name):
        self.display = display.Display(name)
        self.screen = self.display.screen()
        self.window = self.screen.root.create_window(-10, -10, 1, 1, 0, X.CopyFromParent,
                                                     event_mask=X.PropertyChangeMask)
        self.dragged = b""  # as "text/uri-list"

    def atom(self, name):
        return self.display.intern_atom(name)

    # Keyboard

    def keycode(self, name):
        symbol = KEYS.get(name) or XK.string_to_keysym(SIGNS.get(name, name))
        assert symbol, f"no key {name}"
        code, group = next(pair for pair in self.display.keysym_to_keycodes(symbol) if pair[1] in (0, 1))
        return code, group == 1

    def key(self, *chords):
        """Presses keys such as "Tab" or "Ctrl+Shift+a", one after the other."""
        for chord in chords:
            *held, last = chord.split("+") if len(chord) > 1 else [chord]
            code, shifted = self.keycode(last)
            codes = [self.keycode(name)[0] for name in held + ["Shift"] * shifted] + [code]
            for each in codes:
                xtest.fake_input(self.display, X.KeyPress, each)
            for each in reversed(codes):
                xtest.fake_input(self.display, X.KeyRelease, each)
        self.display.sync()

    def type(self, text):
        self.key(*text)

    # Mouse

    def move(self, x, y):
        xtest.fake_input(self.display, X.MotionNotify, x=x, y=y)
        self.display.sync()

    def click(self, place, button=1):
        self.move(*place)
        for kind in (X.ButtonPress, X.ButtonRelease):
            xtest.fake_input(self.display, kind, button)
        self.display.sync()

    def click_with(self, key, place):
        """Clicks while a key such as "Ctrl" is held."""
        code, _ = self.keycode(key)
        xtest.fake_input(self.display, X.KeyPress, code)
        self.click(place)
        xtest.fake_input(self.display, X.KeyRelease, code)
        self.display.sync()

    def pixels(self, extents, margin):
        """What is painted in a place of the screen and `margin` pixels around it, four bytes a pixel."""
        x, y, width, height = extents
        x, y = max(x - margin, 0), max(y - margin, 0)
        width = min(width + 2 * margin, self.screen.width_in_pixels - x)
        height = min(height + 2 * margin, self.screen.height_in_pixels - y)
        return self.screen.root.get_image(x, y, width, height, X.ZPixmap, 0xFFFFFFFF).data

    def menu_is_open(self):
        """Whether a window is shown that the window manager does not manage: a menu. The window manager may pass a click on
        later than keys that follow it, so keys for a menu must wait for the menu."""
        attributes = [window.get_attributes() for window in self.screen.root.query_tree().children]
        return any(a.override_redirect and a.map_state == X.IsViewable for a in attributes)

    # The clipboard

    def copy(self, text):
        """Puts a text on the clipboard, where a program of its own keeps it: the window under test waits for the reply
        and would not reply to us meanwhile."""
        command = ["xclip", "-selection", "clipboard", "-target", "UTF8_STRING"]
        environment = os.environ | {"DISPLAY": self.display.get_display_name()}
        subprocess.run(command, input=text.encode(), check=True, env=environment, stdout=subprocess.DEVNULL,
                       stderr=subprocess.DEVNULL)

        # It goes into the background before the server knows that it owns the clipboard.
        def kept():
            return subprocess.run([*command, "-o"], env=environment, capture_output=True, timeout=10).stdout
        eventually(lambda: kept() == text.encode(), lambda: f"the clipboard holds {kept()}")

    # Drag and drop between programs

    def drag(self, paths, place):
        """Drags files in as another program would; true when the window under the pointer took them."""
        self.dragged = "".join(f"file://{quote(str(path))}\r\n" for path in paths).encode()
        self.window.set_selection_owner(self.atom("XdndSelection"), X.CurrentTime)
        self.move(*place)
        target = self.aware_window_below_pointer()
        self.tell(target, "XdndEnter", DRAG_VERSION << 24, self.atom("text/uri-list"))
        x, y = place
        self.tell(target, "XdndPosition", 0, x << 16 | y, X.CurrentTime, self.atom("XdndActionCopy"))
        status = self.serve(lambda e: self.says(e, "XdndStatus"))
        if not status.data[1][1] & 1:
            self.tell(target, "XdndLeave")
            return False
        self.tell(target, "XdndDrop", 0, X.CurrentTime)
        return bool(self.serve(lambda e: self.says(e, "XdndFinished")).data[1][1] & 1)

    def serve(self, until, patience=10):
        """Serves the target's requests until `until` is true of an event, which it returns."""
        end = time.monotonic() + patience
        while time.monotonic() < end:
            while self.display.pending_events():
                happened = self.display.next_event()
                if happened.type == X.SelectionRequest:
                    self.send_selection(happened)
                if until(happened):
                    return happened
            time.sleep(0.005)
        raise AssertionError("the program did not reply")

    def send_selection(self, request):
        kind = self.atom("text/uri-list")
        place = request.property or request.target
        if request.target == self.atom("TARGETS"):
            request.requestor.change_property(place, Xatom.ATOM, 32, [self.atom("TARGETS"), kind])
        elif request.target == kind:
            request.requestor.change_property(place, kind, 8, self.dragged)
        else:
            place = X.NONE
        request.requestor.send_event(event.SelectionNotify(
            time=request.time, requestor=request.requestor, selection=request.selection, target=request.target,
            property=place))
        self.display.sync()

    def says(self, happened, message):
        return happened.type == X.ClientMessage and happened.client_type == self.atom(message)

    def tell(self, window, message, *values):
        data = [self.window.id, *values] + [0] * (4 - len(values))
        window.send_event(event.ClientMessage(window=window, client_type=self.atom(message), data=(32, data)))
        self.display.sync()

    def aware_window_below_pointer(self):
        window = self.screen.root
        while window:
            if window.get_full_property(self.atom("XdndAware"), X.AnyPropertyType):
                return window
            window = window.query_pointer().child
        raise AssertionError("nothing below the pointer takes drags")
