#!/usr/bin/python3
"""The desktop entry and the metadata are valid, agree with each other and with the program's version. Needs no network."""

import configparser
import os
import re
import subprocess
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree
from pathlib import Path

PACKAGING = Path(os.environ["TESSALINE_SOURCE"]) / "packaging"
IDENTIFIER = "com.orlenth.tessaline"
DESKTOP = PACKAGING / f"{IDENTIFIER}.desktop"
METAINFO = PACKAGING / f"{IDENTIFIER}.metainfo.xml"
ICON = PACKAGING / f"{IDENTIFIER}.svg"


def run(*command):
    return subprocess.run(command, capture_output=True, text=True, stdin=subprocess.DEVNULL)


class DesktopEntry(unittest.TestCase):
    def setUp(self):
        parser = configparser.RawConfigParser(strict=True)
        parser.optionxform = str
        parser.read(DESKTOP, encoding="utf-8")
        self.entry = dict(parser["Desktop Entry"])

    def test_the_validator_says_nothing(self):
        result = run("desktop-file-validate", "--warn-kde", str(DESKTOP))

        self.assertEqual((result.returncode, result.stdout, result.stderr), (0, "", ""))

    def test_the_validator_is_really_asked(self):
        with tempfile.TemporaryDirectory() as folder:
            broken = Path(folder) / DESKTOP.name
            broken.write_text(DESKTOP.read_text().replace("Type=Application", "Type=Nonsense"))

            self.assertNotEqual(run("desktop-file-validate", str(broken)).returncode, 0)

    def test_starts_the_program_by_its_name(self):
        self.assertEqual(self.entry["Exec"], "tessaline")
        self.assertEqual(self.entry["Icon"], IDENTIFIER)
        self.assertEqual(self.entry["Terminal"], "false")

    def test_promises_no_files_since_the_program_takes_none(self):
        self.assertNotIn("MimeType", self.entry)
        self.assertNotRegex(self.entry["Exec"], "%")


class Metadata(unittest.TestCase):
    def setUp(self):
        self.root = ElementTree.parse(METAINFO).getroot()

    def test_the_validator_finds_nothing(self):
        result = run("appstreamcli", "validate", "--no-net", "--pedantic", "--no-color", str(METAINFO))

        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
        self.assertNotRegex(result.stdout, r"(?m)^\s*[EWIP]: ")

    def test_the_validator_is_really_asked(self):
        with tempfile.TemporaryDirectory() as folder:
            broken = Path(folder) / METAINFO.name
            broken.write_text(re.sub("<summary>.*</summary>", "", METAINFO.read_text()))

            self.assertNotEqual(run("appstreamcli", "validate", "--no-net", str(broken)).returncode, 0)

    def test_names_the_desktop_entry_and_the_program(self):
        self.assertEqual(self.root.findtext("id"), IDENTIFIER)
        self.assertEqual(self.root.findtext("launchable"), DESKTOP.name)
        self.assertEqual(self.root.findtext("provides/binary"), "tessaline")

    def test_the_newest_release_is_the_version_that_is_built(self):
        self.assertEqual(self.root.find("releases/release").get("version"), os.environ["TESSALINE_VERSION"])

    def test_the_licence_is_that_of_the_repository(self):
        licence = (PACKAGING.parent / "LICENSE").read_text()

        self.assertEqual(self.root.findtext("project_license"), "MIT")
        self.assertTrue(licence.startswith("MIT License\n"))
        self.assertIn("Copyright (c) 2026 The Tessaline developers\n", licence)

    def test_the_summary_is_that_of_the_desktop_entry(self):
        self.assertIn(f"\nComment={self.root.findtext('summary')}\n", DESKTOP.read_text())


class Icon(unittest.TestCase):
    def test_is_well_formed_and_square(self):
        root = ElementTree.parse(ICON).getroot()

        self.assertEqual(root.tag, "{http://www.w3.org/2000/svg}svg")
        self.assertEqual(root.get("viewBox"), "0 0 128 128")
        self.assertEqual(root.get("width"), root.get("height"))


if __name__ == "__main__":
    unittest.main()
