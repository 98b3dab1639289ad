"""An invisible desktop of our own: X server, window manager, D-Bus session, accessibility bus."""

import ctypes
import os
import shutil
import signal
import subprocess
import tempfile
import time
from pathlib import Path

from Xlib import X, XK, Xatom, display, error, protocol
from Xlib.ext import xtest

from .accessibility import AccessibilityBus
from .picture import Picture
from .timing import TimedOut, wait_until

PR_SET_CHILD_SUBREAPER = 36  # from <linux/prctl.h>
LAUNCHERS = ["/usr/libexec/at-spi-bus-launcher", "/usr/lib/at-spi2-core/at-spi-bus-launcher"]

BUS_CONFIGURATION = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:path={folder}/bus</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
"""
# New windows get the keyboard, and no key or button is taken from the program. Without a binding for clicks, the window
# manager does not hold them back either, so that a click and the keys after it arrive in their order.
WINDOW_MANAGER_CONFIGURATION = """<?xml version="1.0"?>
<openbox_config xmlns="http://openbox.org/3.4/rc">
  <focus><focusNew>yes</focusNew><followMouse>no</followMouse></focus>
  <placement><policy>Smart</policy></placement>
  <desktops><number>1</number></desktops>
  <keyboard/>
  <mouse/>
</openbox_config>
"""

# Characters whose key has another name than the character itself.
KEY_NAMES = {" ": "space", "\n": "Return", "\t": "Tab", "-": "minus", "=": "equal", "+": "plus", ".": "period", ",": "comma",
             "/": "slash", "#": "numbersign", "*": "asterisk", "_": "underscore", "!": "exclam", "?": "question", ":": "colon",
             ";": "semicolon", "(": "parenleft", ")": "parenright", "~": "asciitilde", "'": "apostrophe", '"': "quotedbl",
             "|": "bar", "[": "bracketleft", "]": "bracketright", "`": "grave", "\\": "backslash", ">": "greater"}
MODIFIERS = {"Ctrl": "Control_L", "Shift": "Shift_L", "Alt": "Alt_L"}


class Screen:
    """Use as a context manager. One at a time in a process is the usual case; several are possible."""

    def __init__(self, size=(1440, 900)):
        self.size = size
        self._processes = []
        self.folder = None

    # --- life

    def __enter__(self):
        # Grandchildren whose parent ends become ours, so that they can be waited for: not every system's first process does.
        ctypes.CDLL(None).prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0)
        # A short path: a socket's path may have 107 bytes at most.
        self.folder = Path(tempfile.mkdtemp(prefix="tessaline."))
        try:
            self._start_x_server()
            self._start_buses()
            self._start_window_manager()
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        if getattr(self, "accessibility", None):
            self.accessibility.close()
        if getattr(self, "x", None):
            try:
                self.x.close()
            except (error.ConnectionClosedError, OSError):
                pass
        for process in reversed(self._processes):
            process.terminate()
            try:
                process.wait(5)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()
        self._end_strays()
        shutil.rmtree(self.folder, ignore_errors=True)

    def _end_strays(self):
        """Ends what our own processes started and left behind (the accessibility registry, say): known by our folder in
        the environment they were started with."""
        mark = f"XDG_RUNTIME_DIR={self.folder}".encode()
        for entry in Path("/proc").iterdir():
            if not entry.name.isdigit() or int(entry.name) == os.getpid():
                continue
            try:
                if mark in (entry / "environ").read_bytes().split(b"\0"):
                    os.kill(int(entry.name), signal.SIGTERM)
            except OSError:
                continue  # gone already, or somebody else's

        def all_reaped():
            try:
                while os.waitpid(-1, os.WNOHANG)[0]:
                    pass
            except ChildProcessError:
                return True
            return False

        try:
            wait_until(all_reaped, "all processes of the desktop have ended", 5)
        except TimedOut:
            pass  # something of the caller's own still runs

    def _start(self, *command, **keywords):
        log = open(self.folder / f"{Path(command[0]).name}.log", "wb")
        with log:
            process = subprocess.Popen(command, env=self.environment, stdin=subprocess.DEVNULL, stdout=log,
                                       stderr=subprocess.STDOUT, **keywords)
        self._processes.append(process)
        return process

    def _start_x_server(self):
        self.environment = {
            "PATH": os.environ.get("PATH", "/usr/bin:/bin"), "HOME": str(self.folder), "LC_ALL": "C.UTF-8",
            "XDG_RUNTIME_DIR": str(self.folder), "XDG_SESSION_TYPE": "x11", "GSETTINGS_BACKEND": "memory",
        }
        reading, writing = os.pipe()
        width, height = self.size
        self._start("Xvfb", "-displayfd", str(writing), "-screen", "0", f"{width}x{height}x24", "-nolisten", "tcp",
                    "-noreset", "-dpi", "96", pass_fds=(writing,))
        os.close(writing)
        with os.fdopen(reading) as answer:
            number = answer.readline().strip()
        if not number:
            raise RuntimeError("Xvfb did not start: " + (self.folder / "Xvfb.log").read_text())
        self.environment["DISPLAY"] = f":{number}"
        self.x = display.Display(f":{number}")
        self.root = self.x.screen().root

    def _start_buses(self):
        configuration = self.folder / "session.conf"
        configuration.write_text(BUS_CONFIGURATION.format(folder=self.folder))
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = f"unix:path={self.folder}/bus"
        self._start("dbus-daemon", f"--config-file={configuration}", "--nofork", "--nopidfile")
        wait_until((self.folder / "bus").exists, "the D-Bus session is there")
        launcher = next((path for path in LAUNCHERS if Path(path).exists()), None)
        if launcher is None:
            raise RuntimeError("The accessibility bus is not installed (package at-spi2-core).")
        self._start(launcher, "--launch-immediately")
        self.accessibility = AccessibilityBus(self.environment["DBUS_SESSION_BUS_ADDRESS"])
        self.environment["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"] = "1"

    def _start_window_manager(self):
        configuration = self.folder / "openbox.xml"
        configuration.write_text(WINDOW_MANAGER_CONFIGURATION)
        self._start("openbox", "--config-file", str(configuration), "--sm-disable")
        # It announces itself before it takes care of windows, so it is asked to: windows of ours, until it has taken one.
        # More than one may be needed, since it can overlook what came while it was starting until something else comes.
        trials = []

        def takes_windows():
            if len(trials) < 50:
                trials.append(self.root.create_window(0, 0, 10, 10, 0, X.CopyFromParent))
                trials[-1].map()
                self.x.sync()
            time.sleep(0.05)
            return self.windows()

        wait_until(takes_windows, "the window manager takes care of windows")
        for trial in trials:
            trial.destroy()
        self.x.sync()
        wait_until(lambda: not self.windows(), "the window manager has let our windows go")
        # The first key makes the X server change keyboards, and programs may lose it over that: let it be one of ours.
        self.press("Shift_L")

    def break_down(self):
        """Ends the X server on the spot, as the crash of a desktop does. Nothing else can be done on this screen then."""
        self._processes[0].kill()
        self._processes[0].wait()

    # --- looking

    def picture(self, area=None):
        """The whole screen, or `area` = (x, y, width, height) of it."""
        x, y, width, height = area or (0, 0, *self.size)
        image = self.root.get_image(x, y, width, height, X.ZPixmap, 0xFFFFFFFF)
        return Picture(width, height, bytes(image.data))

    def windows(self):
        """The top-level windows that the window manager knows, in the order in which they came."""
        clients = self.root.get_full_property(self.x.intern_atom("_NET_CLIENT_LIST"), Xatom.WINDOW)
        return [self.x.create_resource_object("window", number) for number in clients.value] if clients else []

    def open_menus(self):
        """The windows of menus on the screen. A context menu is not among the accessible objects of its program, and the
        toolkit gives it no type of its own: what pops up and is neither a tool tip nor the window manager's is a menu."""
        kind, normal = self.x.intern_atom("_NET_WM_WINDOW_TYPE"), self.x.intern_atom("_NET_WM_WINDOW_TYPE_NORMAL")
        found = []
        for window in self.root.query_tree().children:
            try:
                kinds, attributes = window.get_full_property(kind, Xatom.ATOM), window.get_attributes()
            except error.BadWindow:
                continue
            if kinds and normal in kinds.value and attributes.override_redirect and attributes.map_state == X.IsViewable:
                found.append(window)
        return found

    def active_window(self):
        """The number of the window that has the keyboard, or 0."""
        active = self.root.get_full_property(self.x.intern_atom("_NET_ACTIVE_WINDOW"), Xatom.WINDOW)
        return active.value[0] if active and active.value else 0

    def window_process(self, window):
        """The process that made the window, or 0."""
        try:
            value = window.get_full_property(self.x.intern_atom("_NET_WM_PID"), Xatom.CARDINAL)
        except error.BadWindow:
            return 0
        return value.value[0] if value else 0

    def window_area(self, window):
        """(x, y, width, height) on the screen."""
        geometry = window.get_geometry()
        corner = window.translate_coords(self.root, 0, 0)
        return -corner.x, -corner.y, geometry.width, geometry.height

    # --- asking the window manager

    def _ask_manager(self, window, message, data):
        event = protocol.event.ClientMessage(window=window, client_type=self.x.intern_atom(message), data=(32, data))
        self.root.send_event(event, event_mask=X.SubstructureRedirectMask | X.SubstructureNotifyMask)
        self.x.flush()

    def close_window(self, window):
        """What the close button of a window list does."""
        self._ask_manager(window, "_NET_CLOSE_WINDOW", [X.CurrentTime, 2, 0, 0, 0])

    def place_window(self, window, x, y, width, height):
        self._ask_manager(window, "_NET_MOVERESIZE_WINDOW", [(2 << 12) | (0xF << 8) | X.NorthWestGravity, x, y, width, height])

    # --- keys and mouse, as from real devices

    def _keycode(self, name):
        symbol = XK.string_to_keysym(name)
        for code, index in self.x.keysym_to_keycodes(symbol):
            if index in (0, 1):
                return code, index == 1
        raise ValueError(f"No key gives “{name}”.")

    def press(self, combination):
        """Presses and releases one key with its modifiers: "a", "Return", "Ctrl+End", "Ctrl++"."""
        *modifiers, name = combination.split("+") if combination[-1] != "+" else [*combination[:-2].split("+"), "+"]
        modifiers = [part for part in modifiers if part]
        code, shifted = self._keycode(KEY_NAMES.get(name, name))
        codes = [self._keycode(MODIFIERS[modifier])[0] for modifier in modifiers]
        if shifted and "Shift" not in modifiers:
            codes.append(self._keycode("Shift_L")[0])
        for held in codes:
            xtest.fake_input(self.x, X.KeyPress, held)
        xtest.fake_input(self.x, X.KeyPress, code)
        xtest.fake_input(self.x, X.KeyRelease, code)
        for held in reversed(codes):
            xtest.fake_input(self.x, X.KeyRelease, held)
        self.x.sync()

    def type(self, text, interval=0.0):
        for character in text:
            self.press(character)
            if interval:
                time.sleep(interval)

    def move_to(self, x, y):
        xtest.fake_input(self.x, X.MotionNotify, x=int(x), y=int(y))
        self.x.sync()

    def click(self, x, y, button=1, times=1):
        self.move_to(x, y)
        for _ in range(times):
            xtest.fake_input(self.x, X.ButtonPress, button)
            xtest.fake_input(self.x, X.ButtonRelease, button)
        self.x.sync()

    def drag(self, x, y, dx, dy):
        """Presses the left button at a place, moves by (dx, dy) in the small steps of a hand, and lets go."""
        steps = max(abs(dx), abs(dy)) // 4
        self.move_to(x, y)
        time.sleep(0.05)
        xtest.fake_input(self.x, X.ButtonPress, 1)
        self.x.sync()
        for step in range(1, steps + 1):
            time.sleep(0.005)
            self.move_to(x + dx * step // steps, y + dy * step // steps)
        time.sleep(0.05)
        xtest.fake_input(self.x, X.ButtonRelease, 1)
        self.x.sync()
