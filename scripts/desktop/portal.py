"""The settings portal of a desktop, as far as programs ask it whether the desktop is light or dark."""

import threading

from gi.repository import Gio, GLib

from .accessibility import connect

NO_PREFERENCE, DARK, LIGHT = 0, 1, 2

SERVICE = "org.freedesktop.portal.Desktop"
PATH = "/org/freedesktop/portal/desktop"
INTERFACE = "org.freedesktop.portal.Settings"
GROUP, KEY = "org.freedesktop.appearance", "color-scheme"
DESCRIPTION = f"""<node><interface name="{INTERFACE}">
  <method name="Read"><arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="v" direction="out"/></method>
  <signal name="SettingChanged"><arg type="s"/><arg type="s"/><arg type="v"/></signal>
</interface></node>"""


class SettingsPortal:
    """Answers on the screen's D-Bus session until the end of the `with` block."""

    def __init__(self, screen, color_scheme=NO_PREFERENCE):
        self._color_scheme = color_scheme
        self._address = screen.environment["DBUS_SESSION_BUS_ADDRESS"]

    def __enter__(self):
        # Calls are answered on a thread of their own: the caller's waits for what the program does with the answers.
        self._context = GLib.MainContext.new()
        self._loop = GLib.MainLoop.new(self._context, False)
        ready = threading.Event()
        self._thread = threading.Thread(target=self._serve, args=(ready,), daemon=True)
        self._thread.start()
        ready.wait(10)
        return self

    def __exit__(self, *_):
        self._loop.quit()
        self._thread.join(10)
        self._connection.close_sync(None)

    def _serve(self, ready):
        self._context.push_thread_default()
        self._connection = connect(self._address)
        interface = Gio.DBusNodeInfo.new_for_xml(DESCRIPTION).interfaces[0]
        self._connection.register_object(PATH, interface, self._answer, None, None)
        self._connection.call_sync("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName",
                                   GLib.Variant("(su)", (SERVICE, 0)), None, Gio.DBusCallFlags.NONE, 5000, None)
        ready.set()
        self._loop.run()
        self._context.pop_thread_default()

    def _value(self):
        return GLib.Variant("u", self._color_scheme)

    def _answer(self, _connection, _sender, _path, _interface, _method, arguments, invocation):
        if arguments.unpack() == (GROUP, KEY):
            # The older call wraps the value in a variant of its own.
            invocation.return_value(GLib.Variant("(v)", (GLib.Variant("v", self._value()),)))
        else:
            invocation.return_dbus_error("org.freedesktop.portal.Error.NotFound", "There is no such setting.")

    def set_color_scheme(self, color_scheme):
        self._color_scheme = color_scheme
        self._connection.emit_signal(None, PATH, INTERFACE, "SettingChanged",
                                     GLib.Variant("(ssv)", (GROUP, KEY, self._value())))
        self._connection.flush_sync(None)
