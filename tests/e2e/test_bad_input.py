#!/usr/bin/python3
"""What the program makes of files and preferences that are not as one wishes: it says so or bears it, and loses no text."""

import re

from e2e import QUIET_START, EndToEndTest, main  # first: it finds the package of the next line

from desktop import wait_until

LARGE = 50_000_000  # bytes
LONG_LINE = 5_000_000


class BadInput(EndToEndTest):
    def test_a_file_that_is_not_utf8_says_so_and_opens_once_mended(self):
        path = self.write("a.md", b"caf\xe9")
        self.open_files(path)
        self.start()

        self.find("Couldn’t Open a.md")
        path.write_bytes("café".encode())
        self.choose("Try Again", "push button")

        self.expect_text("café")
        self.application.process.terminate()
        self.assertEqual(self.application.wait_for_end(), 0)
        self.assertRegex(self.console(), rf"\A{re.escape(QUIET_START)}Failed to load file at {path}: [^\n]+\n\Z")

    def test_a_save_that_fails_is_told_and_the_text_is_kept_until_it_works(self):
        path = self.write("notes/a.md", b"one")
        self.open_files(path)
        self.start()
        self.put_caret_at_end()
        moved = path.parent.rename(self.profile.home / "moved")

        self.screen.type("!")
        self.find(re.compile("^Couldn’t Save Document"))
        self.find("OK", "push button").click()
        self.expect_text("one!")
        moved.rename(path.parent)
        self.put_caret_at_end()
        self.screen.type("?")

        self.expect_on_disk(path, b"one!?")
        self.end()

    def test_preferences_that_are_no_json_count_as_none(self):
        self.profile.preferences_file.parent.mkdir(parents=True)
        self.profile.preferences_file.write_bytes(b"\0{not json")
        self.start()

        self.find("No projects added.")

        self.choose("Add Project Folder", "push button")
        self.choose_in_panel("Add Project Folder", self.profile.folder("notes"))
        self.expect_stored("lastProjectFolderURLs", [str(self.profile.home / "notes")], 3)
        self.end()

    def test_names_with_line_breaks_quotes_and_emoji_open_and_save(self):
        names = ["line\nbreak.md", "quote\"'.md", "tide 🌊.md", "rtl \u202eabc.md"]
        paths = [self.write(f"notes/{name}", b"x") for name in names]
        self.open_files(*paths, projects=[self.profile.home / "notes"])
        self.start()

        for path in paths:
            self.find("Open Files").find(None, path.name).click()
            self.expect_stored("lastActiveFileURL", str(path))
            self.put_caret_at_end()
            self.screen.type("y")
            self.expect_on_disk(path, b"xy")
        self.end()

    def test_fifty_megabytes_open_and_take_a_key(self):
        line = "All work and no play, “as they say”. ".encode() * 3 + b"\n"
        self.expect_key_at_the_end_of(line * (LARGE // len(line)))

    def test_one_line_of_five_megabytes_opens_and_takes_a_key(self):
        self.expect_key_at_the_end_of(b"words without end " * (LONG_LINE // 18))

    def test_one_word_of_five_megabytes_opens_and_takes_a_key(self):
        self.expect_key_at_the_end_of(b"x" * LONG_LINE)

    def expect_key_at_the_end_of(self, data):
        path = self.write("a.md", data)
        self.open_files(path)
        self.start()
        area = self.text_area()
        wait_until(lambda: area.length == len(data.decode()), "the document is shown", 30)
        self.put_caret_at_end()

        self.screen.type("!")

        wait_until(lambda: path.stat().st_size == len(data) + 1, "the key is on the disk", 10)
        self.assertTrue(path.read_bytes() == data + b"!")
        self.end()


if __name__ == "__main__":
    main()
