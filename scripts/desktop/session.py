"""A session manager of a desktop, as far as the log-out needs it: it asks its programs to save and then to end."""

import ctypes
import os
import select
import threading

from .timing import wait_until

SAVE_BOTH, SAVE_LOCAL = 2, 1  # values of the protocol
NO_INTERACTION = 0


class _Callbacks(ctypes.Structure):
    """SmsCallbacks of libSM: ten pairs of a function and what it is given."""
    _fields_ = [(f"{name}_{part}", ctypes.c_void_p) for name in (
        "register_client", "interact_request", "interact_done", "save_yourself_request", "save_yourself_phase2_request",
        "save_yourself_done", "close_connection", "set_properties", "delete_properties", "get_properties")
        for part in ("callback", "data")]


class SessionManager:
    """Use as a context manager; programs started with `environment` belong to the session."""

    def __init__(self):
        self._sm = ctypes.CDLL("libSM.so.6")
        self._ice = ctypes.CDLL("libICE.so.6")
        for library, name, result in ((self._sm, "SmsGenerateClientID", ctypes.c_void_p),
                                      (self._ice, "IceComposeNetworkIdList", ctypes.c_char_p),
                                      (self._ice, "IceAcceptConnection", ctypes.c_void_p)):
            getattr(library, name).restype = result
        self._clients = []
        self._saved = threading.Event()
        self._kept = []  # callbacks live as long as the library may call them

    def __enter__(self):
        self._wake, self._waker = os.pipe()
        self._initialize()
        self._thread = threading.Thread(target=self._serve, daemon=True)
        self._thread.start()
        return self

    def __exit__(self, *_):
        os.write(self._waker, b"q")
        self._thread.join(10)
        self._free_listeners()
        os.close(self._wake)
        os.close(self._waker)

    # --- what a test does

    def wait_for_client(self, seconds=10):
        wait_until(lambda: self._clients, "the program has joined the session", seconds)

    def ask_to_save(self):
        """Tells the program that the session ends and waits until it says that it has saved."""
        self._saved.clear()
        os.write(self._waker, b"s")
        if not self._saved.wait(10):
            raise AssertionError("The program did not say that it has saved.")

    def end(self):
        """Tells the program to end."""
        os.write(self._waker, b"d")

    def call_off(self):
        """Tells the program that the session goes on after all."""
        os.write(self._waker, b"c")

    # --- the protocol, on the thread

    def _keep(self, function):
        self._kept.append(function)
        return ctypes.cast(function, ctypes.c_void_p).value

    def _initialize(self):
        error = ctypes.create_string_buffer(256)
        new_client = ctypes.CFUNCTYPE(ctypes.c_int, ctypes.c_void_p, ctypes.c_void_p, ctypes.POINTER(ctypes.c_ulong),
                                      ctypes.POINTER(_Callbacks), ctypes.c_void_p)(self._new_client)
        accept_all = ctypes.CFUNCTYPE(ctypes.c_int, ctypes.c_char_p)(lambda _host: 1)
        keep_running = ctypes.CFUNCTYPE(None, ctypes.c_void_p)(lambda _connection: None)  # the library's own handler exits
        self._kept += [new_client, accept_all, keep_running]
        self._ice.IceSetIOErrorHandler(keep_running)
        if not self._sm.SmsInitialize(b"test", b"1", new_client, None, accept_all, 256, error):
            raise RuntimeError(error.value.decode())
        count, listeners = ctypes.c_int(), ctypes.c_void_p()
        if not self._ice.IceListenForConnections(ctypes.byref(count), ctypes.byref(listeners), 256, error):
            raise RuntimeError(error.value.decode())
        self._free_listeners = lambda: self._ice.IceFreeListenObjs(count, listeners)
        self._listeners = list(ctypes.cast(listeners, ctypes.POINTER(ctypes.c_void_p))[:count.value])
        for listener in self._listeners:
            self._ice.IceSetHostBasedAuthProc(ctypes.c_void_p(listener), accept_all)
        self.environment = {"SESSION_MANAGER": self._ice.IceComposeNetworkIdList(count, listeners).decode()}

    def _new_client(self, client, _data, mask, callbacks, _reason):
        mask[0] = 0x3ff  # all of them are set

        def ignore(count):
            return self._keep(ctypes.CFUNCTYPE(ctypes.c_int, *[ctypes.c_void_p] * count)(lambda *_: 1))
        register = ctypes.CFUNCTYPE(ctypes.c_int, ctypes.c_void_p, ctypes.c_void_p, ctypes.c_void_p)(self._register)
        saved = ctypes.CFUNCTYPE(None, ctypes.c_void_p, ctypes.c_void_p, ctypes.c_int)(self._save_done)
        closed = ctypes.CFUNCTYPE(None, ctypes.c_void_p, ctypes.c_void_p, ctypes.c_int, ctypes.c_void_p)(self._closed)
        for name, function in (("register_client", self._keep(register)), ("interact_request", ignore(3)),
                               ("interact_done", ignore(3)), ("save_yourself_request", ignore(7)),
                               ("save_yourself_phase2_request", ignore(2)), ("save_yourself_done", self._keep(saved)),
                               ("close_connection", self._keep(closed)), ("set_properties", ignore(4)),
                               ("delete_properties", ignore(4)), ("get_properties", ignore(2))):
            setattr(callbacks[0], f"{name}_callback", function)
        return 1

    def _register(self, client, _data, _previous):
        identifier = self._sm.SmsGenerateClientID(ctypes.c_void_p(client))
        self._sm.SmsRegisterClientReply(ctypes.c_void_p(client), ctypes.c_void_p(identifier))
        self._sm.SmsSaveYourself(ctypes.c_void_p(client), SAVE_LOCAL, 0, NO_INTERACTION, 0)
        return 1

    def _save_done(self, client, _data, _success):
        if client in self._clients:
            self._saved.set()
        else:
            self._clients.append(client)  # the first save, which follows the registration
            self._sm.SmsSaveComplete(ctypes.c_void_p(client))

    def _closed(self, client, _data, _count, _reasons):
        self._clients = [one for one in self._clients if one != client]

    def _serve(self):
        number = self._ice.IceGetListenConnectionNumber
        connection_number = self._ice.IceConnectionNumber
        listeners = {number(ctypes.c_void_p(listener)): listener for listener in self._listeners}
        connections = {}
        while True:
            ready, _, _ = select.select([self._wake, *listeners, *connections], [], [])
            for descriptor in ready:
                if descriptor == self._wake:
                    order = os.read(self._wake, 1)
                    if order == b"q":
                        return
                    for client in self._clients:
                        if order == b"s":
                            self._sm.SmsSaveYourself(ctypes.c_void_p(client), SAVE_BOTH, 1, NO_INTERACTION, 0)
                        elif order == b"c":
                            self._sm.SmsShutdownCancelled(ctypes.c_void_p(client))
                        else:
                            self._sm.SmsDie(ctypes.c_void_p(client))
                elif descriptor in listeners:
                    status = ctypes.c_int()
                    connection = self._ice.IceAcceptConnection(ctypes.c_void_p(listeners[descriptor]), ctypes.byref(status))
                    if connection:
                        connections[connection_number(ctypes.c_void_p(connection))] = connection
                else:
                    reply = ctypes.c_int()
                    if self._ice.IceProcessMessages(ctypes.c_void_p(connections[descriptor]), None, ctypes.byref(reply)) != 0:
                        del connections[descriptor]
