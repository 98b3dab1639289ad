"""What the end-to-end tests share: one screen for a module, a throw-away profile for each test, the program of the build
under test, and a picture of the screen for each failure.

From ctest come TESSALINE_EXECUTABLE (the program), TESSALINE_EVIDENCE (a folder for pictures of failures),
TESSALINE_TIME_SCALE (stretches all limits; see desktop/timing.py) and TESSALINE_SANITIZER (what the build looks for; empty for
nothing).
"""

import functools
import os
import re
import sys
import time
import unittest
from pathlib import Path

TOP = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(TOP / "scripts"))
from desktop import TIME_SCALE, Application, Profile, Screen, wait_until  # noqa: E402

EXECUTABLE = Path(os.environ.get("TESSALINE_EXECUTABLE", TOP / "build/dev/src/shell/tessaline")).resolve()
SANITIZED = bool(os.environ.get("TESSALINE_SANITIZER"))
EVIDENCE = Path(os.environ.get("TESSALINE_EVIDENCE", TOP / "build/e2e-evidence")).resolve()

# All that a start prints: that this build cannot update itself, and that there is no server for the assistant.
NO_UPDATER = "Sparkle is disabled: set TESSALINE_SPARKLE_PUBLIC_ED_KEY when building the release.\n"
SERVER_PLACES = (EXECUTABLE.parent, EXECUTABLE.parent.parent / "lib/tessaline", TOP / "target/release", TOP / "target/debug")
NO_SERVER = "tessaline-server binary not found. Paths checked: [{}]\n".format(
    ", ".join(f'"{place}/tessaline-server"' for place in SERVER_PLACES))
QUIET_START = NO_UPDATER + NO_SERVER
NO_SUGGESTIONS = "Failed to fetch suggestions: Could not connect to the server.\n"  # for each file that comes to the front

AUTOSAVE_DELAY = 0.3  # seconds after the last change

MARKDOWN = "rawMarkdown"  # the stored name of the view mode with the source editor


def keeping_evidence(method):
    """Saves the screen and the tree of accessible objects if the test fails."""
    @functools.wraps(method)
    def test(self):
        try:
            method(self)
        except unittest.SkipTest:
            raise
        except BaseException:
            self.keep_evidence()
            raise
    return test


class Clock:
    """The time of day that a program started with `environment` sees: the true one until `advance`. Timers go on as they do."""

    def __init__(self, file):
        library = next(Path("/usr/lib").glob("*/faketime/libfaketimeMT.so.1"), None)
        if library is None:
            raise RuntimeError("libfaketime is not there: install the packages first.")
        self.file = file
        self.file.write_text("+0")
        self.environment = {
            "LD_PRELOAD": str(library), "FAKETIME_NO_CACHE": "1",
            "FAKETIME_TIMESTAMP_FILE": str(file), "FAKETIME_DONT_FAKE_MONOTONIC": "1", "NO_FAKE_STAT": "1"}

    def advance(self, minutes):
        """Puts the clock this far ahead of the true time."""
        replacement = self.file.with_suffix(".new")
        replacement.write_text(f"+{minutes}m")
        replacement.rename(self.file)


class EndToEndTest(unittest.TestCase):
    screen_size = (1440, 900)

    def __init_subclass__(cls, **keywords):
        super().__init_subclass__(**keywords)
        for name, method in list(vars(cls).items()):
            if name.startswith("test"):
                setattr(cls, name, keeping_evidence(method))

    @classmethod
    def setUpClass(cls):
        if not EXECUTABLE.exists():
            raise RuntimeError(f"{EXECUTABLE} is not there: build it first.")
        cls.screen = cls.enterClassContext(Screen(cls.screen_size))

    def setUp(self):
        self.profile = self.enterContext(Profile())
        self.application = Application(self.screen, self.profile, EXECUTABLE)
        self.addCleanup(self.application.kill)
        self.starts = 0

    def keep_evidence(self):
        EVIDENCE.mkdir(parents=True, exist_ok=True)
        place = f"{EVIDENCE}/{self.id().replace('__main__.', '')}"
        try:
            self.screen.picture().save(f"{place}.png")
            with open(f"{place}.txt", "w", encoding="utf-8") as file:
                if self.application.is_running:
                    print(self.application.root().outline(), file=file)
                print(f"--- standard output\n{self.application.output()}", file=file)
                print(f"--- standard error\n{self.application.errors()}", file=file)
                print(f"--- preferences\n{self.profile.preferences}", file=file)
            print(f"\nThe screen at the failure: {place}.png, .txt", file=sys.stderr)
        except Exception as failure:  # noqa: BLE001 - must not hide the failure itself
            print(f"\nThe screen could not be kept: {failure}", file=sys.stderr)

    # --- files

    def write(self, name, data):
        """A file below the profile's home; returns its path."""
        path = self.profile.home / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(data)
        return path

    def open_files(self, *paths, projects=(), active=0, **values):
        """Stores preferences as a run that left these files open would have."""
        self.profile.store(**{
            "lastProjectFolderURLs": [str(path) for path in projects], "lastOpenFileURLs": [str(path) for path in paths],
            "editorViewModeV2": MARKDOWN, **({"lastActiveFileURL": str(paths[active])} if paths else {}), **values})

    def expect_on_disk(self, path, data, seconds=1.0):
        """Waits until the file holds exactly these bytes."""
        def current():
            return path.read_bytes() if path.exists() else None
        try:
            wait_until(lambda: current() == data, "the bytes are on the disk", seconds)
        except AssertionError:
            self.assertEqual(current(), data)

    def expect_stored(self, key, value, seconds=1.0):
        """Waits until the preference has been stored; None for absent."""
        try:
            wait_until(lambda: self.profile.preferences.get(key) == value, "the preference is stored", seconds)
        except AssertionError:
            self.assertEqual(self.profile.preferences.get(key), value, key)

    # --- the program

    def start(self):
        self.application.start()
        self.starts += 1
        self.application.window(20)
        return self.application

    def end(self, how=None, status=0):
        """Quits (by SIGTERM unless `how` does something else) and expects this status and a quiet console."""
        if how is None:
            self.application.process.terminate()
        else:
            how()
        self.assertEqual(self.application.wait_for_end(), status)
        self.expect_quiet_console()

    def console(self):
        """What the program has printed, but for what the missing server makes it say now and then."""
        return self.application.output().replace(NO_SUGGESTIONS, "")

    def expect_quiet_console(self):
        self.assertEqual(self.console(), QUIET_START * self.starts)
        self.assertEqual(self.application.errors(), "")

    def restart(self):
        self.end()
        return self.start()

    # --- the window

    def find(self, name, role=None, seconds=10.0):
        return self.application.find(role, name, seconds)

    def is_there(self, name, role=None):
        return bool(self.application.find_all(role, name))

    def expect_gone(self, name, role=None, seconds=5.0):
        wait_until(lambda: not self.is_there(name, role), f"“{name}” is gone", seconds, interval=0.05)

    def text_area(self):
        return self.find("Markdown Source", "text")

    def expect_text(self, text, seconds=5.0):
        """Waits until the source editor shows exactly this text."""
        def shown():
            areas = self.application.find_all("text", "Markdown Source")
            return areas[0].text if areas else None
        try:
            wait_until(lambda: shown() == text, "the text is shown", seconds, interval=0.05)
        except AssertionError:
            self.assertEqual(shown(), text)

    def put_caret_at_end(self):
        """Clicks into the source editor and goes to the end of the text."""
        area = self.text_area()
        area.click()
        wait_until(lambda: area.has_state("focused"), "the source editor has the keyboard", 5)
        self.screen.press("Ctrl+End")
        return area

    def in_tree(self, name):
        return self.find("Projects", "tree").find("tree item", name)

    def open_from_tree(self, *names):
        """Opens the folders and then the file, by clicks."""
        for name in names:
            self.in_tree(name).click()

    def choose(self, name, role=None):
        self.find(name, role).click()

    def choose_segment(self, label):
        """Clicks a segment, which is named by its label, or by its help text where the window is too narrow for labels."""
        self.segment(label).click()

    def segment(self, label):
        return self.find(re.compile(rf"^{label}( Theme)?$"), "radio button")

    def choose_menu_item(self, menu, item):
        self.find(menu, "menu item").click()
        self.find(item, "menu item").click()

    def choose_in_panel(self, title, path):
        """Answers a file or folder panel of this title with a path, typed."""
        panel = self.find(title, "dialog")
        field = panel.find("text")
        field.click()
        self.screen.press("Ctrl+a")
        self.screen.type(str(path))
        wait_until(lambda: field.text == str(path), "the path is typed", 5)
        self.screen.press("Return")
        self.expect_gone(title, "dialog")

    def color_at(self, node, dx, dy):
        """The colour of one pixel, counted from the corner of an accessible object."""
        x, y, _, _ = node.area
        return self.screen.picture((x + dx, y + dy, 1, 1)).color(0, 0)

    def pause(self, seconds):
        time.sleep(seconds * TIME_SCALE)


def main():
    unittest.main(verbosity=2)
