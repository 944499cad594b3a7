# SPDX-License-Identifier: GPL-3.0-or-later
"""Keyboard, mouse, clipboard and a drag from another program, as events that come from the X server."""
from urllib.parse import quote
import time

from Xlib import X, XK, Xatom, display
from Xlib.ext import xtest
from Xlib.protocol import event

KEYS = {"Ctrl": XK.XK_Control_L, "Shift": XK.XK_Shift_L, "Alt": XK.XK_Alt_L}
# Unshifted keys of the server's US keyboard that have no name of one letter.
SIGNS = {" ": "space", "/": "slash", "-": "minus", ".": "period", ",": "comma", "\\": "backslash", "_": "underscore",
         ":": "colon"}
DRAG_VERSION = 5


class Hands:
    """A user of one display. Every act returns once the server has taken it."""

    def __init__(self, name):
        self.display = display.Display(name)
        self.screen = self.display.screen()
        self.window = self.screen.root.create_window(-10, -10, 1, 1, 0, X.CopyFromParent,
                                                     event_mask=X.PropertyChangeMask)
        self.offers = {}

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

    def menu_is_open(self):
        """Whether any window is up that is none of the window manager's: a menu. The window manager may hand on a click
        later than keys that come after it, so that keys for a menu must wait for the menu."""
        attributes = [window.get_attributes() for window in self.screen.root.query_tree().children]
        return any(a.override_redirect and a.map_state == X.IsViewable for a in attributes)

    # Selections: the clipboard, and what a drag carries

    def offer(self, selection, kind, data):
        self.offers[self.atom(selection)] = (self.atom(kind), data)
        self.window.set_selection_owner(self.atom(selection), X.CurrentTime)
        self.display.sync()

    def copy(self, text):
        """Puts a text on the clipboard; serve() must run until it was pasted."""
        self.offer("CLIPBOARD", "UTF8_STRING", text.encode())

    def serve(self, until, patience=10):
        """Answers other programs' questions until `until` is true of one of the events, or nothing is left."""
        end = time.monotonic() + patience
        while time.monotonic() < end:
            while self.display.pending_events():
                happened = self.display.next_event()
                if happened.type == X.SelectionRequest:
                    self.answer(happened)
                if until(happened):
                    return happened
            time.sleep(0.005)
        raise AssertionError("the program did not answer")

    def answer(self, request):
        kind, data = self.offers[request.selection]
        place = request.property or request.target
        if request.target == self.atom("TARGETS"):
            request.requestor.change_property(place, Xatom.ATOM, 32, [self.atom("TARGETS"), kind])
        elif request.target == kind:
            request.requestor.change_property(place, kind, 8, data)
        else:
            place = X.NONE
        request.requestor.send_event(event.SelectionNotify(
            time=request.time, requestor=request.requestor, selection=request.selection, target=request.target,
            property=place))
        self.display.sync()

    # Drag and drop between programs

    def drag(self, paths, place, drop=True):
        """Drags files in from outside as another program would; true when the window under the pointer took them."""
        self.offer("XdndSelection", "text/uri-list", "".join(f"file://{quote(str(p))}\r\n" for p in paths).encode())
        self.move(*place)
        target = self.aware_window_below_pointer()
        self.tell(target, "XdndEnter", DRAG_VERSION << 24, self.atom("text/uri-list"))
        x, y = place
        self.tell(target, "XdndPosition", 0, x << 16 | y, X.CurrentTime, self.atom("XdndActionCopy"))
        status = self.serve(lambda e: self.says(e, "XdndStatus"))
        if not status.data[1][1] & 1:
            self.tell(target, "XdndLeave")
            return False
        if not drop:
            self.tell(target, "XdndLeave")
            return True
        self.tell(target, "XdndDrop", 0, X.CurrentTime)
        return bool(self.serve(lambda e: self.says(e, "XdndFinished")).data[1][1] & 1)

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
