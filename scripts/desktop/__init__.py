"""Drives the real program on an invisible desktop: a private X server with a window manager, a D-Bus session and an
accessibility bus. What the end-to-end tests and the scripts that take pictures share.

    with Screen() as screen, Profile() as profile:
        application = Application(screen, profile, executable)
        application.start()
        application.find("push button", "Refresh Projects").click()

Everything is started by this package, lives in throw-away folders, and is ended with it. Needs the Debian packages of
packaging/debian-packages.txt and /usr/bin/python3.
"""

from .accessibility import Node, NotFound, asked_again
from .application import Application, Profile, sample_projects
from .drop import FileDrop
from .picture import Picture
from .portal import SettingsPortal
from .screen import Screen
from .session import SessionManager
from .timing import TIME_SCALE, TimedOut, wait_until

__all__ = ["Application", "FileDrop", "Node", "NotFound", "Picture", "Profile", "Screen", "SessionManager", "SettingsPortal",
           "TIME_SCALE", "TimedOut", "asked_again", "sample_projects", "wait_until"]
