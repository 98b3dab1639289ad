#!/usr/bin/python3
"""`cmake --install` and the Debian package put every file in its place, and what is installed runs."""

import os
import stat
import subprocess
import tempfile
import unittest
from pathlib import Path

SOURCE = Path(os.environ["TESSALINE_SOURCE"])
BUILD = Path(os.environ["TESSALINE_BUILD"])
VERSION = os.environ["TESSALINE_VERSION"]

# Place below the prefix, and what it must be a copy of (None: a program, which is linked anew).
FILES = {
    "bin/tessaline": None,
    "bin/tessaline-server": None,
    "share/applications/com.orlenth.tessaline.desktop": "packaging/com.orlenth.tessaline.desktop",
    "share/metainfo/com.orlenth.tessaline.metainfo.xml": "packaging/com.orlenth.tessaline.metainfo.xml",
    "share/icons/hicolor/scalable/apps/com.orlenth.tessaline.svg": "packaging/com.orlenth.tessaline.svg",
    "share/doc/tessaline/copyright": "LICENSE",
}


def run(*command, **keywords):
    result = subprocess.run([str(word) for word in command], capture_output=True, text=True,
                            stdin=subprocess.DEVNULL, **keywords)
    if result.returncode != 0:
        raise AssertionError(f"{command} ended with {result.returncode}:\n{result.stdout}{result.stderr}")
    return result.stdout


def files_below(folder):
    return sorted(str(path.relative_to(folder)) for path in Path(folder).rglob("*") if not path.is_dir())


class Installation(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory(prefix="tessaline-install.")
        self.addCleanup(temporary.cleanup)
        self.folder = Path(temporary.name)

    def check_tree(self, prefix):
        self.assertEqual(files_below(prefix), sorted(FILES))
        for place, origin in FILES.items():
            mode = stat.S_IMODE((prefix / place).stat().st_mode)
            self.assertEqual(mode, 0o755 if origin is None else 0o644, place)
            if origin:
                self.assertEqual((prefix / place).read_bytes(), (SOURCE / origin).read_bytes(), place)

    def check_program(self, program):
        # From an empty home and without a display: the answer needs neither.
        environment = {"PATH": "/usr/bin:/bin", "HOME": str(self.folder), "LC_ALL": "C.UTF-8"}
        self.assertIn(VERSION, run(program, "--version", cwd=self.folder, env=environment))

    def test_puts_every_file_in_its_place(self):
        prefix = self.folder / "prefix"

        run("cmake", "--install", BUILD, "--prefix", prefix)

        self.check_tree(prefix)
        self.check_program(prefix / "bin/tessaline")
        self.check_program(prefix / "bin/tessaline-server")

    def test_the_debian_package_holds_the_same_files_and_names_its_libraries(self):
        run("cpack", "-G", "DEB", "--config", BUILD / "CPackConfig.cmake", "-B", self.folder / "deb",
            "-D", "CPACK_DEBIAN_COMPRESSION_TYPE=none", "-D", f"CPACK_OUTPUT_FILE_PREFIX={self.folder}/deb")

        architecture = run("dpkg", "--print-architecture").strip()
        package = self.folder / f"deb/tessaline_{VERSION}_{architecture}.deb"
        self.assertTrue(package.exists(), files_below(self.folder / "deb"))
        unpacked = self.folder / "unpacked"
        run("dpkg-deb", "--extract", package, unpacked)
        self.check_tree(unpacked / "usr")
        self.check_program(unpacked / "usr/bin/tessaline")
        self.check_program(unpacked / "usr/bin/tessaline-server")
        depends = run("dpkg-deb", "--field", package, "Depends")
        for library in ("libc6", "libqt6core6", "libqt6widgets6", r"libcpp-httplib0\.11"):
            self.assertRegex(depends, rf"(^|, ){library}\b")
        self.assertEqual(run("dpkg-deb", "--field", package, "Version").strip(), VERSION)


if __name__ == "__main__":
    unittest.main()
