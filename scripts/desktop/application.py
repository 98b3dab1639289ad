"""The program under observation, in folders of its own."""

import json
import os
import shutil
import signal
import subprocess
import tempfile
import time
from pathlib import Path

from .timing import wait_until

SAMPLE = Path(__file__).resolve().parents[2] / "resources/sample"
IDENTIFIER = "com.orlenth.tessaline"
# What makes a program built with sanitizers report in the way its build wants.
PASSED_ON = ("ASAN_OPTIONS", "UBSAN_OPTIONS", "LSAN_OPTIONS", "TSAN_OPTIONS")


class Profile:
    """A throw-away home with the folders that programs keep their own files in. A context manager."""

    def __enter__(self):
        self.home = Path(tempfile.mkdtemp(prefix="tessaline-home."))
        self.environment = {"HOME": str(self.home)}
        for variable, folder in (("CONFIG", ".config"), ("DATA", ".local/share"), ("CACHE", ".cache"), ("STATE", ".local/state")):
            self.environment[f"XDG_{variable}_HOME"] = str(self.home / folder)
        self.preferences_file = self.home / ".config" / IDENTIFIER / "preferences.json"
        return self

    def __exit__(self, *_):
        shutil.rmtree(self.home, ignore_errors=True)

    @property
    def preferences(self):
        """The stored preferences; empty while there are none."""
        return json.loads(self.preferences_file.read_text()) if self.preferences_file.exists() else {}

    def store(self, **values):
        """Adds values to the stored preferences, as an earlier run would have left them."""
        self.preferences_file.parent.mkdir(parents=True, exist_ok=True)
        self.preferences_file.write_text(json.dumps({**self.preferences, **values}))

    def folder(self, name):
        path = self.home / name
        path.mkdir(parents=True, exist_ok=True)
        return path


def sample_projects(profile, **values):
    """Copies the sample projects into the profile and stores preferences that open them. Returns their common folder."""
    folder = profile.home / "sample"
    shutil.copytree(SAMPLE, folder)
    notes = folder / "field-notes"
    files = [notes / "chapters/tides.md", notes / "outline.md", folder / "letters/todo.txt"]
    profile.store(**{
        "lastProjectFolderURLs": [str(notes), str(folder / "letters")],
        "lastOpenFileURLs": [str(path) for path in files],
        "lastActiveFileURL": str(files[0]),
        **values,
    })
    return folder


class Application:
    """One program on a screen; it can be started again and again."""

    def __init__(self, screen, profile, executable, arguments=()):
        self.screen = screen
        self.profile = profile
        self.command = [str(executable), *arguments]
        self.process = None
        self._root = None
        self.output_file = profile.home / "console-output"
        self.errors_file = profile.home / "console-errors"

    # --- life

    def environment(self):
        passed_on = {name: os.environ[name] for name in PASSED_ON if name in os.environ}
        return {**self.screen.environment, "QT_QPA_PLATFORM": "xcb", **self.profile.environment, **passed_on}

    def start(self, **keywords):
        """Starts the process; returns at once."""
        with open(self.output_file, "ab") as output, open(self.errors_file, "ab") as errors:
            self.process = subprocess.Popen(self.command, env=self.environment(), stdin=subprocess.DEVNULL, stdout=output,
                                            stderr=errors, **keywords)
        self._root = None
        return self.process

    @property
    def is_running(self):
        return self.process is not None and self.process.poll() is None

    def wait_for_end(self, seconds=10.0):
        """The exit status, negative for a signal."""
        wait_until(lambda: self.process.poll() is not None, "the program ends", seconds, interval=0.005)
        return self.process.returncode

    def quit(self, signal_number=signal.SIGTERM):
        self.process.send_signal(signal_number)
        return self.wait_for_end()

    def kill(self):
        """Ends it on the spot, as a crash would."""
        if self.is_running:
            self.process.kill()
        if self.process:
            self.process.wait()

    def output(self):
        return self.output_file.read_text() if self.output_file.exists() else ""

    def errors(self):
        return self.errors_file.read_text() if self.errors_file.exists() else ""

    # --- its window

    def windows(self):
        return [window for window in self.screen.windows() if self.screen.window_process(window) == self.process.pid]

    def window(self, seconds=20.0):
        """The first window of the process, waited for."""
        def first():
            if not self.is_running:
                raise AssertionError(f"The program ended with {self.process.returncode}:\n{self.output()}{self.errors()}")
            return next(iter(self.windows()), None)
        return wait_until(first, "its window is there", seconds)

    def picture(self):
        return self.screen.picture(self.screen.window_area(self.window()))

    def wait_until_drawn(self, seconds=30.0):
        """Waits until the window shows more than a plain ground and has stopped changing (but for a blinking caret). Returns
        the picture."""
        last, since = None, time.monotonic()

        def settled():
            nonlocal last, since
            picture = self.picture()
            if picture.colors() < 8 or last is None or picture.differing_pixels(last) > 200:
                last, since = picture, time.monotonic()
                return None
            return picture if time.monotonic() - since > 0.4 else None

        return wait_until(settled, "the window is drawn", seconds, interval=0.1)

    # --- its accessible objects

    def root(self, seconds=20.0):
        if self._root is None:
            def registered():
                if not self.is_running:
                    raise AssertionError(f"The program ended with {self.process.returncode}:\n{self.output()}{self.errors()}")
                return self.screen.accessibility.application(self.process.pid)
            self._root = wait_until(registered, "the program is on the accessibility bus", seconds, interval=0.02)
            self._root.screen = self.screen
        return self._root

    def find(self, role=None, name=None, seconds=10.0):
        return self.root().find(role, name, seconds)

    def find_all(self, role=None, name=None):
        return self.root().find_all(role, name)
