#!/usr/bin/python3
"""Writing without the syntax: what is typed into the formatted editor is Markdown on the disk."""

from e2e import MARKDOWN, EndToEndTest, main  # first: it finds the package of the next line

from desktop import wait_until

FORMATTED, SPLIT = "editor", "split"


class Formatted(EndToEndTest):
    def formatted(self):
        return self.find("Document", "text")

    def put_caret_at_formatted_end(self):
        area = self.formatted()
        area.click()
        wait_until(lambda: area.has_state("focused"), "the formatted editor has the keyboard", 5)
        self.screen.press("Ctrl+End")

    def expect_formatted(self, text):
        try:
            wait_until(lambda: self.formatted().text == text, "the formatted text is shown", 5)
        except AssertionError:
            self.assertEqual(self.formatted().text, text)

    def test_a_markdown_file_opens_without_its_syntax_unless_another_mode_is_stored(self):
        path = self.write("a.md", b"# Title\n\nSome **bold** words\n")
        self.profile.store(lastOpenFileURLs=[str(path)], lastActiveFileURL=str(path))
        self.start()

        text = self.formatted().text

        self.assertIn("Title", text)
        self.assertIn("Some bold words", text)
        self.assertNotIn("#", text)
        self.assertNotIn("*", text)
        self.end()
        self.assertEqual(path.read_bytes(), b"# Title\n\nSome **bold** words\n")

    def test_typed_words_and_format_commands_are_markdown_on_the_disk(self):
        path = self.write("a.md", b"plain")
        self.open_files(path, editorViewModeV2=FORMATTED)
        self.start()
        self.put_caret_at_formatted_end()

        self.screen.type(" words")
        self.expect_on_disk(path, b"plain words")
        self.screen.press("Ctrl+a")
        self.choose("Bold", "push button")

        self.expect_on_disk(path, b"**plain words**")
        self.expect_formatted("plain words")
        self.end()

    def test_both_panes_of_the_split_show_one_text(self):
        path = self.write("a.md", b"one")
        self.open_files(path, editorViewModeV2=SPLIT)
        self.start()

        self.put_caret_at_end()
        self.screen.type(" two")
        self.expect_formatted("one two")
        self.put_caret_at_formatted_end()
        self.screen.type(" three")
        self.expect_text("one two three")

        self.expect_on_disk(path, b"one two three")
        self.end()

    def test_a_key_in_the_formatted_editor_just_before_the_end_is_on_the_disk(self):
        path = self.write("a.md", b"")
        self.open_files(path, editorViewModeV2=FORMATTED)
        self.start()
        self.put_caret_at_formatted_end()

        self.screen.type("k")
        self.pause(0.02)
        self.end()

        self.assertEqual(path.read_bytes(), b"k")

    def test_a_change_of_mode_keeps_every_character(self):
        path = self.write("a.md", b"# A\n\n- [x] done\n")
        self.open_files(path, editorViewModeV2=MARKDOWN)
        self.start()
        self.put_caret_at_end()
        self.screen.type("end")

        for mode in ("Editor", "Split", "Markdown"):
            self.choose_segment(mode)
        self.expect_text("# A\n\n- [x] done\nend")

        self.end()
        self.assertEqual(path.read_bytes(), b"# A\n\n- [x] done\nend")


if __name__ == "__main__":
    main()
