"""The accessible objects of programs, asked over D-Bus directly: no cache in between can be out of date."""

import functools
import re
import time

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402 - the version has to be chosen first

from .timing import TIME_SCALE, wait_until  # noqa: E402

INTERFACE = "org.a11y.atspi."
ROOT = "/org/a11y/atspi/accessible/root"
NULL = "/org/a11y/atspi/null"

# Bits of the state set that tests ask for.
STATES = {"active": 1, "checked": 4, "editable": 7, "enabled": 8, "expandable": 9, "expanded": 10, "focusable": 11,
          "focused": 12, "selected": 23, "sensitive": 24, "showing": 25, "visible": 30}


class NotFound(AssertionError):
    """No accessible object is of that role and name."""


def connect(address):
    flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION

    def connection():
        try:
            return Gio.DBusConnection.new_for_address_sync(address, flags, None, None)
        except GLib.Error as failure:
            if failure.matches(Gio.io_error_quark(), Gio.IOErrorEnum.CONNECTION_REFUSED):
                return None  # its socket is there before anybody listens at it
            raise

    return wait_until(connection, "the bus takes connections")


def asked_again(question):
    """Asks a function with several questions to objects again when one of them has gone in between."""
    @functools.wraps(question)
    def ask(*arguments):
        for _ in range(50):
            try:
                return question(*arguments)
            except GLib.Error:
                time.sleep(0.02)
        return question(*arguments)
    return ask


class AccessibilityBus:
    """The accessibility bus of one D-Bus session."""

    def __init__(self, session_address):
        session = connect(session_address)

        def owned():
            return session.call_sync("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "NameHasOwner",
                                     GLib.Variant("(s)", ("org.a11y.Bus",)), None, 0, 5000, None).unpack()[0]

        wait_until(owned, "the accessibility bus is there")
        address, = session.call_sync("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", None, None, 0, 10000,
                                     None).unpack()
        session.close_sync(None)
        self._connection = connect(address)

    def close(self):
        try:
            self._connection.close_sync(None)
        except GLib.Error:
            pass

    def call(self, bus, path, interface, method, arguments=None, seconds=5.0):
        answer = self._connection.call_sync(bus, path, interface, method, arguments, None, Gio.DBusCallFlags.NONE,
                                            int(seconds * 1000 * TIME_SCALE), None)
        return answer.unpack()

    def application(self, process):
        """The root object of the program with this process id, or None while it has none."""
        try:
            programs, = self.call("org.a11y.atspi.Registry", ROOT, INTERFACE + "Accessible", "GetChildren")
        except GLib.Error:
            return None
        for bus, path in programs:
            try:
                number, = self.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                                    "GetConnectionUnixProcessID", GLib.Variant("(s)", (bus,)))
            except GLib.Error:
                continue  # it has just gone
            if number == process:
                return Node(self, bus, path)
        return None


def matches(wanted, text):
    """`wanted` is None (anything), the whole text, or a compiled pattern that is looked for in it."""
    if wanted is None:
        return True
    return bool(wanted.search(text)) if isinstance(wanted, re.Pattern) else wanted == text


class Node:
    """One accessible object. Every question goes to the program, so an answer is never older than the question. An object
    that is gone gives GLib.Error."""

    def __init__(self, bus, name, path, screen=None):
        self._bus, self._name, self._path = bus, name, path
        self.screen = screen

    def __eq__(self, other):
        return isinstance(other, Node) and (self._name, self._path) == (other._name, other._path)

    def __hash__(self):
        return hash((self._name, self._path))

    def __repr__(self):
        try:
            return f"<{self.role} “{self.name}”>"
        except GLib.Error:
            return "<gone>"

    def _call(self, interface, method, arguments=None):
        return self._bus.call(self._name, self._path, INTERFACE + interface, method, arguments)

    def _property(self, interface, name):
        return self._bus.call(self._name, self._path, "org.freedesktop.DBus.Properties", "Get",
                              GLib.Variant("(ss)", (INTERFACE + interface, name)))[0]

    @property
    def name(self):
        return self._property("Accessible", "Name")

    @property
    def description(self):
        return self._property("Accessible", "Description")

    @property
    def role(self):
        return self._call("Accessible", "GetRoleName")[0]

    @property
    def children(self):
        listing, = self._call("Accessible", "GetChildren")
        return [Node(self._bus, name, path, self.screen) for name, path in listing if path != NULL]

    def has_state(self, state):
        words, = self._call("Accessible", "GetState")
        bit = STATES[state]
        return bool(words[bit // 32] >> (bit % 32) & 1)

    @property
    def states(self):
        return {state for state in STATES if self.has_state(state)}

    @property
    def area(self):
        """(x, y, width, height) on the screen."""
        return self._call("Component", "GetExtents", GLib.Variant("(u)", (0,)))[0]

    @property
    def text(self):
        """The whole text of a text area or field."""
        return self._call("Text", "GetText", GLib.Variant("(ii)", (0, -1)))[0]

    @property
    def length(self):
        """The number of characters of a text area or field."""
        return self._property("Text", "CharacterCount")

    def character_area(self, offset):
        """Where one character of a text area stands: (x, y, width, height) on the screen."""
        return self._call("Text", "GetCharacterExtents", GLib.Variant("(iu)", (offset, 0)))

    @property
    def has_size(self):
        _, _, width, height = self.area
        return width > 0 and height > 0

    # --- searching

    def walk(self, depth=0):
        """This object and everything that shows below it, in the order of the tree, each with its depth. What is below
        something hidden (a closed menu, the other view of a file panel) is left out: asking for it costs time, and some
        widgets complain on the console about being asked for rows that they have not got."""
        try:
            if depth and not self.has_state("showing"):
                return
            yield self, depth
            children = self.children
        except GLib.Error:
            return  # gone since its parent named it
        for child in children:
            yield from child.walk(depth + 1)

    def search(self, role=None, name=None):
        """Every object below this one with this role (or one of several) and name that a person could see, as it is come
        upon."""
        roles = (role,) if isinstance(role, str) else role
        for node, _ in self.walk():
            try:
                if (roles is None or node.role in roles) and matches(name, node.name) and node.has_size:
                    yield node
            except GLib.Error:
                continue  # gone since its parent named it

    def find_all(self, role=None, name=None):
        return list(self.search(role, name))

    def find(self, role=None, name=None, seconds=10.0):
        """The first of them, waited for."""
        try:
            return wait_until(lambda: next(self.search(role, name), None), "it appears", seconds, interval=0.03)
        except AssertionError:
            wanted = name.pattern if isinstance(name, re.Pattern) else name
            raise NotFound(f"There is no {role or 'object'} “{wanted}” on the screen.\n{self.outline()}") from None

    def outline(self):
        """The tree as text, for messages."""
        lines = []
        for node, depth in self.walk():
            try:
                lines.append(f"{'  ' * depth}{node.role} “{node.name}” {node.area} {' '.join(sorted(node.states))}")
            except GLib.Error as failure:
                lines.append(f"{'  ' * depth}({failure.message})")
        return "\n".join(lines)

    # --- acting, as a person would

    def click(self, button=1, times=1):
        x, y, width, height = self.area
        self.screen.click(x + width // 2, y + height // 2, button, times)
