# SPDX-License-Identifier: GPL-3.0-or-later
"""What assistive technology sees of a program: its accessibility tree, read over the message bus from outside."""
import dbus

ACCESSIBLE = "org.a11y.atspi.Accessible"
COMPONENT = "org.a11y.atspi.Component"
TEXT = "org.a11y.atspi.Text"
PROPERTIES = "org.freedesktop.DBus.Properties"
ROOT = "/org/a11y/atspi/accessible/root"
# Bits of the state set, by the numbers of the interface.
STATES = {1: "active", 4: "checked", 7: "editable", 8: "enabled", 10: "expanded", 11: "focusable", 12: "focused",
          16: "modal", 20: "pressed", 22: "selectable", 23: "selected", 25: "showing", 30: "visible",
          41: "checkable"}


class Gone(Exception):
    """The thing has been taken from the tree since it was seen there."""


class Node:
    """One thing in the tree. Everything is asked each time, so that it is never stale."""

    def __init__(self, bus, service, path):
        self.bus, self.service, self.path = bus, service, path

    def call(self, method, *arguments, of=ACCESSIBLE):
        thing = self.bus.get_object(self.service, self.path, introspect=False)
        try:
            return thing.get_dbus_method(method, of)(*arguments)
        except dbus.DBusException as error:
            raise Gone(str(error)) from error

    def __eq__(self, other):
        return isinstance(other, Node) and (self.service, self.path) == (other.service, other.path)

    @property
    def children(self):
        return [Node(self.bus, str(service), str(path)) for service, path in self.call("GetChildren")]

    @property
    def name(self):
        return str(self.call("Get", ACCESSIBLE, "Name", of=PROPERTIES))

    @property
    def description(self):
        return str(self.call("Get", ACCESSIBLE, "Description", of=PROPERTIES))

    @property
    def role(self):
        """The role; of buttons the finer one, which is another for a button with a menu."""
        role = str(self.call("GetRoleName"))
        return str(self.call("GetLocalizedRoleName")) if role == "push button" else role

    @property
    def states(self):
        low, high = self.call("GetState")
        bits = int(low) | int(high) << 32
        return {name for bit, name in STATES.items() if bits >> bit & 1}

    @property
    def extents(self):
        """x, y, width, height on the screen."""
        return tuple(int(value) for value in self.call("GetExtents", dbus.UInt32(0), of=COMPONENT))

    @property
    def centre(self):
        x, y, width, height = self.extents
        return x + width // 2, y + height // 2

    @property
    def text(self):
        return str(self.call("GetText", 0, -1, of=TEXT))

    def shown(self, into_tables=False):
        """What is on the screen below this node, in the order of the tree."""
        for child in self.children:
            if "showing" in child.states:
                yield child
                if into_tables or child.role not in ("table", "list"):
                    yield from child.shown(into_tables)

    def find(self, role, name=None):
        """The first shown node of this role and name; None: there is none."""
        return next((node for node in self.shown() if node.role == role and name in (None, node.name)), None)

    def __repr__(self):
        return f"{self.role} '{self.name}'"


def connect(session_address):
    """The accessibility bus of a session."""
    session = dbus.bus.BusConnection(session_address)
    address = session.get_object("org.a11y.Bus", "/org/a11y/bus").GetAddress(dbus_interface="org.a11y.Bus")
    session.close()
    return dbus.bus.BusConnection(address)


def programs(bus):
    return Node(bus, "org.a11y.atspi.Registry", ROOT).children
