"""Files dragged from another program and let go on a window, as a file manager does it (the XDND protocol)."""

import select
from pathlib import Path

from Xlib import X, display
from Xlib.protocol import event

from .timing import TIME_SCALE, TimedOut

VERSION = 5


class FileDrop:
    """One drag. Its own connection is another program to the X server."""

    def __init__(self, screen, paths):
        self._screen = screen
        self._x = display.Display(screen.environment["DISPLAY"])
        self._data = "".join(Path(path).as_uri() + "\r\n" for path in paths).encode()
        self._window = self._x.screen().root.create_window(0, 0, 1, 1, 0, X.CopyFromParent)
        self._type = self._atom("text/uri-list")
        self._window.set_selection_owner(self._atom("XdndSelection"), X.CurrentTime)

    def _atom(self, name):
        return self._x.intern_atom(name)

    def _target(self):
        """The window under the pointer that takes drops."""
        window = self._x.screen().root
        while window:
            window = window.query_pointer().child
            if window and window.get_full_property(self._atom("XdndAware"), X.AnyPropertyType):
                return window
        raise AssertionError("Nothing under the pointer takes drops.")

    def _send(self, target, message, *data):
        values = [self._window.id, *data, *[0] * (4 - len(data))]
        target.send_event(event.ClientMessage(window=target, client_type=self._atom(message), data=(32, values)))
        self._x.flush()

    def _answer(self, message, seconds=10.0):
        """The values of this message of the target. Meanwhile whoever asks gets the dragged data."""
        while True:
            while not self._x.pending_events():
                if not select.select([self._x.fileno()], [], [], seconds * TIME_SCALE)[0]:
                    raise TimedOut(f"Waited in vain for {message}.")
            each = self._x.next_event()
            if each.type == X.SelectionRequest:
                self._give(each)
            elif each.type == X.ClientMessage and each.client_type == self._atom(message):
                return each.data[1]

    def _give(self, request):
        given = request.property if request.target == self._type else X.NONE
        if given:
            request.requestor.change_property(request.property, self._type, 8, self._data)
        request.requestor.send_event(event.SelectionNotify(time=request.time, requestor=request.requestor,
                                                           selection=request.selection, target=request.target,
                                                           property=given))
        self._x.flush()

    def let_go(self, x, y):
        """Drops at a place of the screen. Returns whether the window there took it."""
        self._screen.move_to(x, y)
        self._x.sync()
        target = self._target()
        self._send(target, "XdndEnter", VERSION << 24, self._type)
        self._send(target, "XdndPosition", 0, x << 16 | y, X.CurrentTime, self._atom("XdndActionCopy"))
        takes_it = bool(self._answer("XdndStatus")[1] & 1)
        self._send(target, "XdndDrop" if takes_it else "XdndLeave")
        if takes_it:
            self._answer("XdndFinished")
        return takes_it

    def close(self):
        self._x.close()
